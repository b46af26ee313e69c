#include "shotlight/output.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "shotlight/errors.h"
#include "standin/gate/shown_text.h"

namespace shotlight {
namespace {

[[noreturn]] void fail() {
  throw CommandError(std::string("standard output can't be written: ") + std::strerror(errno) +
                     "; send it to a file or a program that can take it");
}

}  // namespace

void prepareOutput() {
  ::signal(SIGXFSZ, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // A new descriptor gets the lowest free number.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool outputIsPipe() {
  struct stat output {};
  return fstat(STDOUT_FILENO, &output) == 0 && (S_ISFIFO(output.st_mode) || S_ISSOCK(output.st_mode));
}

std::optional<size_t> outputWidth() {
  if (!isatty(STDOUT_FILENO)) return {};
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const char* const columns = std::getenv("COLUMNS");
  const std::string_view text = columns ? columns : "";
  size_t width = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), width);
  if (error != std::errc() || end != text.data() + text.size() || width == 0) return {};
  return width;
}

void print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) fail();
}

void finishOutput() {
  if (std::fflush(stdout) != 0) fail();
}

void printNote(const std::string& line) {
  std::fprintf(stderr, "%s\n", standin::shownText(line).c_str());
}

void complain(const std::string& line) {
  printNote("shotlight: " + line);
}

void reportError(const std::exception& error) {
  complain(error.what());
  if (const auto* const command = dynamic_cast<const CommandError*>(&error)) {
    for (const std::string& line : command->linesBelow) printNote(line);
  }
}

}  // namespace shotlight
