// Ctrl-C, and being told to end. Each signal is there before the program starts, so that it comes in the
// middle of the first thing that waits for it.
#include <signal.h>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

class Interrupted : public testing::TestWithParam<int> {
 protected:
  Interrupted() {
    for (int i = 0; i < 100; ++i) scratch_.file("folder " + std::to_string(i) + "/a.txt");
  }

  Result interrupt(std::vector<std::string> arguments) {
    return run({.arguments = std::move(arguments), .folder = scratch_.path(), .pendingSignal = GetParam()});
  }

  ScratchFolder scratch_;
};

TEST_P(Interrupted, SearchPrintsNothingAndGivesBackEverything) {
  for (const auto& options : std::vector<std::vector<std::string>>{{}, {"--count"}, {"--live"}}) {
    for (const std::string& plugin : {files.dylib, files.elf}) {
      std::vector<std::string> arguments = {"find", "kMDItemFSName == \"*.txt\"", "--plugin", plugin};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Result result = interrupt(arguments);
      EXPECT_EQ(result.status, 128 + GetParam()) << result;
      EXPECT_EQ(result.output, "");
      EXPECT_EQ(result.errors, "shotlight: interrupted\n");  // an object that is left would be named here
    }
  }
}

TEST_P(Interrupted, AttributesAreStillWellFormed) {
  const Result result = interrupt({"attrs", "folder 1/a.txt", "--json"});
  EXPECT_EQ(result.status, 128 + GetParam()) << result;
  EXPECT_EQ(result.output, "[]\n");
}

INSTANTIATE_TEST_SUITE_P(By, Interrupted, testing::Values(SIGINT, SIGTERM),
                         [](const auto& info) { return info.param == SIGINT ? "SIGINT" : "SIGTERM"; });

}  // namespace
