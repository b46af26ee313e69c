#include <cstdio>
#include <exception>

#include "shotlight/find.h"
#include "shotlight/options.h"
#include "shotlight/output.h"

namespace {

enum ExitStatus { kResults = 0, kNoResults = 1, kError = 2 };

ExitStatus run(const std::vector<std::string>& arguments) {
  const auto options = shotlight::parseCommandLine(arguments);
  if (options.help) {
    shotlight::print(shotlight::helpText);
    shotlight::finishOutput();
    return kResults;
  }
  return shotlight::find(options) ? kResults : kNoResults;
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
