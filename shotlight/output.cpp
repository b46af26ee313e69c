#include "shotlight/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

void keepStandardStreamsApart() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // A new descriptor gets the lowest free number.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool outputIsPipe() {
  struct stat output {};
  return fstat(STDOUT_FILENO, &output) == 0 && (S_ISFIFO(output.st_mode) || S_ISSOCK(output.st_mode));
}

void print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) fail();
}

void finishOutput() {
  if (std::fflush(stdout) != 0) fail();
}

}  // namespace shotlight
