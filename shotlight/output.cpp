#include "shotlight/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "shotlight/errors.h"

namespace shotlight {
namespace {

[[noreturn]] void fail() {
  throw CommandError(std::string("standard output can't be written: ") + std::strerror(errno) +
                     "; send it to a file or a program that can take it");
}

}  // namespace

void print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) fail();
}

void finishOutput() {
  if (std::fflush(stdout) != 0) fail();
}

}  // namespace shotlight
