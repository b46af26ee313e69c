// Standard output that takes nothing.
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kAdvice[] = "; send it to a file or a program that can take it";

class Writing : public testing::TestWithParam<std::vector<std::string>> {
 protected:
  Result to(Output output) {
    scratch_.file("a.txt");
    return run({.arguments = GetParam(), .folder = scratch_.path(), .output = output});
  }

  ScratchFolder scratch_;
};

TEST_P(Writing, ToAFullDeviceIsAnError) {
  expectError(to(Output::full),
              std::string("standard output can't be written: No space left on device") + kAdvice);
}

TEST_P(Writing, ToAClosedOutputIsAnError) {
  expectError(to(Output::closed),
              std::string("standard output can't be written: Bad file descriptor") + kAdvice);
}

INSTANTIATE_TEST_SUITE_P(Of, Writing,
                         testing::Values(std::vector<std::string>{"find", "kMDItemFSName == \"a.txt\""},
                                         std::vector<std::string>{"--help"}),
                         [](const auto& info) { return info.param[0] == "find" ? "Results" : "Help"; });

TEST(WritingMany, ResultsToAFullDeviceIsAnError) {
  const ScratchFolder folder;
  for (int i = 0; i < 2000; ++i) folder.file("file " + std::to_string(i) + ".txt");
  expectError(
      run({.arguments = {"find", "kMDItemFSName == \"*\"", "--in", folder.path()}, .output = Output::full}),
      std::string("standard output can't be written: No space left on device") + kAdvice);
}

TEST(WritingNothing, ToAClosedOutputIsNoError) {
  const ScratchFolder folder;
  for (const Output output : {Output::closed, Output::full}) {
    const Result result =
        run({.arguments = {"find", "kMDItemFSName == \"*\"", "--in", folder.path()}, .output = output});
    EXPECT_EQ(result.status, 1) << result;
  }
}

TEST(WritingErrors, ToAClosedOutputStillGivesStatus2) {
  EXPECT_EQ(run({.arguments = {"nonsense"}, .output = Output::closed}).status, 2);
}

}  // namespace
