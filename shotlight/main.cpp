#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "shotlight/find.h"
#include "shotlight/options.h"

namespace {

enum ExitStatus { kResults = 0, kNoResults = 1, kError = 2 };

ExitStatus run(const std::vector<std::string>& arguments) {
  const auto options = shotlight::parseCommandLine(arguments);
  bool results = true;
  if (options.help) {
    std::fputs(shotlight::helpText, stdout);
  } else {
    results = shotlight::find(options);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    std::fprintf(stderr, "shotlight: the results can't be written: %s\n", std::strerror(errno));
    return kError;
  }
  return results ? kResults : kNoResults;
}

}  // namespace

int main(int count, char** words) {
  try {
    return run({words + 1, words + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "shotlight: %s\n", error.what());
    return kError;
  }
}
