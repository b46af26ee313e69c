// What find's options choose: where, among what, in which order, and what is told of it.
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

class Selection : public testing::Test {
 protected:
  Selection() {
    scratch_.file("home/b 10.txt", "12345");
    scratch_.file("home/a.txt", "123");
    scratch_.file("home/b 9.txt", "123");
    scratch_.file("elsewhere/c.md", "1");
  }

  Result findWith(const std::vector<std::string>& options, const std::string& query = "kMDItemFSSize > 0") {
    Launch what{.arguments = {"find", query},
                .folder = scratch_.path(),
                .environment = {"HOME=" + scratch_.at("home")}};
    what.arguments.insert(what.arguments.end(), options.begin(), options.end());
    return run(what);
  }

  std::vector<std::string> names(std::vector<std::string> options) {
    options.push_back("--show=kMDItemFSName");
    const Result result = findWith(options);
    EXPECT_EQ(result.status, 0) << result;
    return lines(result.output);
  }

  ScratchFolder scratch_;
};

TEST_F(Selection, SortsByTheFirstKeyThenByTheNext) {
  EXPECT_EQ(names({"--sort", "kMDItemFSName"}), (Texts{"a.txt", "b 9.txt", "b 10.txt", "c.md"}));
  EXPECT_EQ(names({"--sort", "kMDItemFSSize,kMDItemFSName"}),
            (Texts{"c.md", "a.txt", "b 9.txt", "b 10.txt"}));
  EXPECT_EQ(names({"--sort", "kMDItemFSSize", "--sort", "kMDItemFSName:desc"}),
            (Texts{"c.md", "b 9.txt", "a.txt", "b 10.txt"}));
}

TEST_F(Selection, ReversesTheKeysThatAreToDescend) {
  EXPECT_EQ(names({"--sort", "kMDItemFSName:desc"}), (Texts{"c.md", "b 10.txt", "b 9.txt", "a.txt"}));
  EXPECT_EQ(names({"--sort", "kMDItemFSSize:desc,kMDItemFSName:desc"}),
            (Texts{"b 10.txt", "b 9.txt", "a.txt", "c.md"}));
  EXPECT_EQ(names({"--sort", "kMDItemFSSize:desc,kMDItemFSName", "--limit", "2"}),
            (Texts{"b 10.txt", "a.txt"}));
}

TEST_F(Selection, CountsOnly) {
  const Result result = findWith({"--count"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "4\n");
  EXPECT_TRUE(matches(result.errors, "4 results in [0-9.]+ s\n"));
  const Result none = findWith({"--count"}, "kMDItemFSSize > 1000");
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.output, "0\n");
}

TEST_F(Selection, ListsValuesWithTheirCountsTheMostFrequentFirst) {
  const Result result = findWith({"--values", "kMDItemFSSize"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "2\t3\n1\t1\n1\t5\n");
  EXPECT_TRUE(matches(result.errors, "3 values in 4 results in [0-9.]+ s\n"));
  EXPECT_EQ(findWith({"--values", "kMDItemTitle"}).output, "");
}

TEST_F(Selection, LooksInAScope) {
  EXPECT_EQ(sorted(names({"--scope", "home"})), sorted({"a.txt", "b 9.txt", "b 10.txt"}));
}

TEST_F(Selection, LooksInScopesAndFoldersTogether) {
  EXPECT_EQ(sorted(names({"--scope", "home", "--in", scratch_.at("elsewhere")})),
            sorted({"a.txt", "b 9.txt", "b 10.txt", "c.md"}));
  EXPECT_EQ(sorted(names({"--scope=home", "--in", scratch_.at("home")})),
            sorted({"a.txt", "b 9.txt", "b 10.txt"}));
}

TEST_F(Selection, LooksWithinAnotherQuery) {
  EXPECT_EQ(sorted(names({"--within", "kMDItemFSName == \"*.txt\""})),
            sorted({"a.txt", "b 9.txt", "b 10.txt"}));
  EXPECT_EQ(names({"--within", "kMDItemFSSize == 3", "--sort", "kMDItemFSName:desc"}),
            (Texts{"b 9.txt", "a.txt"}));
  EXPECT_EQ(findWith({"--within", "kMDItemFSSize == 5"}, "kMDItemFSSize == 3").status, 1);
}

TEST_F(Selection, IsTheSameWithTheELFLibrary) {
  for (const auto& options : std::vector<std::vector<std::string>>{
           {"--sort", "kMDItemFSSize:desc,kMDItemFSName"},
           {"--values", "kMDItemFSSize"},
           {"--within", "kMDItemFSSize == 3"},
           {"--scope", "home"},
           {"--show", "kMDItemFSSize,kMDItemFSInvisible,kMDItemContentTypeTree"}}) {
    std::vector<std::string> elf = options;
    elf.insert(elf.end(), {"--plugin", files.elf});
    const Result expected = findWith(options);
    EXPECT_EQ(expected.status, 0) << expected;
    EXPECT_NE(expected.output, "");
    EXPECT_EQ(findWith(elf).output, expected.output);
  }
}

TEST_F(Selection, ShowsMissingValuesAsNothingAndListsWithCommas) {
  const std::vector<std::string> options = {
      "--show", "kMDItemTitle,kMDItemContentTypeTree,kMDItemFSInvisible", "--in", scratch_.at("elsewhere")};
  EXPECT_TRUE(matches(findWith(options).output, "\t[a-z.-]+(, [a-z.-]+)+\tfalse\n"));
}

TEST_F(Selection, AlignsAColumnOfNumbersToTheRight) {
  const Result result =
      run({.arguments = {"find", "kMDItemFSSize > 0", "--sort", "kMDItemFSSize", "--show",
                         "kMDItemFSSize,kMDItemTitle,kMDItemFSName", "--in", scratch_.path()},
           .output = Output::terminal});
  for (const std::string& line : lines(result.output)) {
    EXPECT_TRUE(matches(line, "Size  Title  File|   [135]         [abc].*")) << result;
  }
}

}  // namespace
