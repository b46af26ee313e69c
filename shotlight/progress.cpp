#include "shotlight/progress.h"

#include <unistd.h>

#include <cstdio>

namespace shotlight {
namespace {

using namespace std::chrono_literals;

const auto kPatience = 1s;
const auto kInterval = 100ms;

}  // namespace

Progress::Progress() : terminal_(isatty(STDERR_FILENO)), next_(Clock::now() + kPatience) {}

Progress::~Progress() {
  clear();
}

void Progress::show(size_t count, const char* what) {
  if (!terminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + kInterval;
  std::fprintf(stderr, "\r%zu %s\x1B[K", count, what);
  shown_ = true;
}

void Progress::clear() {
  if (shown_) std::fputs("\r\x1B[K", stderr);
  shown_ = false;
}

}  // namespace shotlight
