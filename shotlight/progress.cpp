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

void Progress::print(const std::string& line) {
  next_ = Clock::now() + kInterval;
  std::fprintf(stderr, "\r%s\x1B[K", line.c_str());
  shown_ = true;
}

void Progress::show(size_t count, const char* what) {
  if (isDue()) print(std::to_string(count) + ' ' + what);
}

void Progress::showLooked(size_t looked, size_t toBeRead, bool isAll) {
  if (!isDue()) return;
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const size_t done = looked - toBeRead;
  std::string line = std::to_string(done) + " files looked at, " +
                     std::to_string(static_cast<size_t>(static_cast<double>(done) / seconds)) + " a second";
  if (toBeRead > 0)
    line += "; " + std::to_string(toBeRead) + (isAll ? "" : " or more") + " are still to be read";
  print(line);
}

void Progress::clear() {
  if (shown_) std::fputs("\r\x1B[K", stderr);
  shown_ = false;
}

}  // namespace shotlight
