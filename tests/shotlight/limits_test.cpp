// What a search leaves out of the folders that it looks in.
#include <signal.h>

#include <algorithm>
#include <filesystem>

#include "tests/shotlight/opened_folders.h"
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEverything[] = "kMDItemFSName == \"*\"";

class Limits : public testing::Test {
 protected:
  Limits() {
    for (const char* const file : {"build/a.o", "build/deep/b.c", "src/c.c", "src/build/d.c", "src/gen/e.c",
                                   ".git/f", "src/.g", "h.c"}) {
      scratch_.file(file);
    }
  }

  Result findWith(std::vector<std::string> options) {
    Launch what{.arguments = {"find", kEverything, "--show", "kMDItemPath"}, .folder = scratch_.path()};
    what.arguments.insert(what.arguments.end(), options.begin(), options.end());
    return run(what);
  }
  Texts found(const std::vector<std::string>& options) {
    return scratch_.within(lines(findWith(options).output));
  }

  const ScratchFolder scratch_;
};

TEST_F(Limits, AreNoneUnlessTheyAreAskedFor) {
  EXPECT_EQ(found({}),
            (Texts{".git", ".git/f", "build", "build/a.o", "build/deep", "build/deep/b.c", "h.c", "src",
                   "src/.g", "src/build", "src/build/d.c", "src/c.c", "src/gen", "src/gen/e.c"}));
}

TEST_F(Limits, LeaveOutNames) {
  EXPECT_EQ(found({"--exclude", "build", "--exclude=.*"}),
            (Texts{"h.c", "src", "src/c.c", "src/gen", "src/gen/e.c"}));
  EXPECT_EQ(found({"--exclude", "*.?", "--exclude", "[.f]*"}),
            (Texts{"build", "build/deep", "src", "src/build", "src/gen"}));
}

TEST_F(Limits, TakeCharactersForCharactersWhateverTheirBytes) {
  scratch_.file("\u00E9/x");
  scratch_.file("\u6771/x");
  EXPECT_EQ(found({"--exclude", "?", "--depth", "1"}), (Texts{".git", "build", "h.c", "src"}));
  EXPECT_EQ(found({"--exclude", "[\u00E8-\u00EA]", "--depth", "1", "--no-hidden"}),
            (Texts{"build", "h.c", "src", "\u6771"}));
}

TEST_F(Limits, LeaveOutPaths) {
  EXPECT_EQ(found({"--exclude", "src/*", "--exclude", ".git"}),
            (Texts{"build", "build/a.o", "build/deep", "build/deep/b.c", "h.c", "src"}));
  for (const std::string& glob : {std::string("./build"), scratch_.at("build"), scratch_.path() + "/b*d/"}) {
    EXPECT_EQ(found({"--exclude", glob, "--exclude", ".*"}),
              (Texts{"h.c", "src", "src/build", "src/build/d.c", "src/c.c", "src/gen", "src/gen/e.c"}))
        << glob;
  }
  EXPECT_EQ(found({"--exclude", "**/*.c", "--exclude", ".*"}),
            (Texts{"build", "build/a.o", "build/deep", "src", "src/build", "src/gen"}));
}

TEST_F(Limits, BoundTheDepth) {
  EXPECT_EQ(found({"--depth", "1"}), (Texts{".git", "build", "h.c", "src"}));
  EXPECT_EQ(found({"--depth", "2", "--in", "build"}), (Texts{"build/a.o", "build/deep", "build/deep/b.c"}));
  EXPECT_EQ(found({"--depth", "2147483647"}).size(), 14u);
}

TEST_F(Limits, LeaveOutWhatIsHidden) {
  EXPECT_EQ(found({"--no-hidden", "--depth=1"}), (Texts{"build", "h.c", "src"}));
  EXPECT_EQ(found({"--no-hidden", "--in", ".git"}), Texts{".git/f"});
  EXPECT_EQ(found({"--no-hidden"}).size(), 11u);
}

TEST_F(Limits, DontHoldForFoldersThatAreNamed) {
  EXPECT_EQ(found({"--exclude", "build", "--in", "build"}),
            (Texts{"build/a.o", "build/deep", "build/deep/b.c"}));
  // One in another is looked into as deep as the other.
  EXPECT_EQ(
      found({"--depth", "1", "--exclude", "deep", "--exclude", ".*", "--in", ".", "--in", "build/deep",
             "--in", "src/gen", "--in", "./src"}),
      (Texts{"build", "h.c", "src", "build/deep/b.c", "src/gen/e.c", "src/build", "src/c.c", "src/gen"}));
}

TEST_F(Limits, AreKeptByEveryWayToPrint) {
  EXPECT_EQ(find({kEverything, "--in", scratch_.path(), "--depth=1", "--count"}).output, "4\n");
  EXPECT_EQ(
      find({kEverything, "--in", scratch_.path(), "--depth=1", "--values", "kMDItemFSInvisible"}).output,
      "3\tfalse\n1\ttrue\n");
  EXPECT_EQ(found({"--depth=1", "--sort", "kMDItemFSName:desc"}), (Texts{"src", "h.c", "build", ".git"}));
  EXPECT_EQ(found({"--depth=1", "--within", "kMDItemFSInvisible == true"}), Texts{".git"});
}

TEST_F(Limits, HaveFoldersNotLookedInto) {
  const auto opened = [&](const std::vector<std::string>& options) {
    const OpenedFolders folders(
        {scratch_.at("build"), scratch_.at("build/deep"), scratch_.at("src"), scratch_.at("src/build")});
    EXPECT_EQ(findWith(options).status, 0);
    return scratch_.within(folders.names());
  };
  EXPECT_EQ(opened({}), (Texts{"build", "build/deep", "src", "src/build"}));
  EXPECT_EQ(opened({"--exclude", "build"}), Texts{"src"});
  EXPECT_EQ(opened({"--exclude", "/**/build"}), Texts{"src"});
  EXPECT_EQ(opened({"--depth", "2"}), (Texts{"build", "src"}));
  EXPECT_EQ(opened({"--depth", "1", "--one-file-system"}), Texts{});
}

// /dev/shm and others are mounted in /dev.
TEST_F(Limits, KeepToOneFileSystem) {
  const auto below = [](const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {kEverything, "--in", "/dev", "--show", "kMDItemPath"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Texts paths = lines(find(arguments).output);
    EXPECT_EQ(std::count(paths.begin(), paths.end(), "/dev/pts"), 1);
    return std::count_if(paths.begin(), paths.end(),
                         [](const std::string& path) { return path.starts_with("/dev/pts/"); });
  };
  if (below({}) == 0) GTEST_SKIP() << "nothing is mounted in /dev";
  EXPECT_EQ(below({"--one-file-system"}), 0);
}

TEST_F(Limits, HoldForWhatComesLater) {
  Running program({.arguments = {"find", kEverything, "--in", scratch_.path(), "--live", "--exclude", "build",
                                 "--exclude=.git", "--depth=2"}});
  ASSERT_TRUE(program.waitForLine("+ " + scratch_.at("src/gen")));
  scratch_.file("build/new");
  scratch_.file("src/gen/new");
  scratch_.file("new/build");
  std::filesystem::rename(scratch_.at("build/deep"), scratch_.at("deep"));
  std::filesystem::rename(scratch_.at("src/gen"), scratch_.at("gen"));
  ASSERT_TRUE(program.waitForLine("+ " + scratch_.at("gen/new")));
  scratch_.file("last");
  ASSERT_TRUE(program.waitForLine("+ " + scratch_.at("last")));
  program.send(SIGINT);
  Texts told;
  for (const std::string& line : lines(program.finish().output)) {
    if (line[0] != '~') told.push_back(line.substr(0, 2) + scratch_.within({line.substr(2)})[0]);
  }
  EXPECT_EQ(sorted(told), sorted({"+ h.c", "+ src", "+ src/.g", "+ src/c.c", "+ src/gen", "+ new", "+ deep",
                                  "+ deep/b.c", "- src/gen", "+ gen", "+ gen/new", "+ gen/e.c", "+ last"}));
}

TEST_F(Limits, AreChecked) {
  expectError(findWith({"--exclude", ""}), "--exclude '': the pattern is empty; write one, such as '*.o'");
  for (const std::string pattern : {"/", "./", "..", "a/../b"})
    expectError(findWith({"--exclude", pattern}),
                "--exclude '" + pattern + "': nothing has such a path; write one, such as 'build/*.o'");
  for (const std::string depth : {"0", "-1", "x", ""}) {
    expectError(findWith({"--depth", depth}),
                "--depth '" + depth + "': a whole number from 1 to 2147483647 is needed");
  }
}

}  // namespace
