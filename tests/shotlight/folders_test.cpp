// Where the program looks.
#include <sys/stat.h>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEveryText[] = "kMDItemFSName == \"*.txt\"";

class Folders : public testing::Test {
 protected:
  Folders() {
    scratch_.file("one/a.txt");
    scratch_.file("one/inner/b.txt");
    scratch_.file("two/c.txt");
  }

  // The paths of what is found in the named folders, from a program that runs in the scratch folder.
  std::vector<std::string> foundIn(const std::vector<std::string>& names, const std::string& from = "") {
    Launch what{.arguments = {"find", kEveryText, "--show", "kMDItemPath"}, .folder = scratch_.at(from)};
    for (const std::string& name : names) what.arguments.insert(what.arguments.end(), {"--in", name});
    const Result result = run(what);
    EXPECT_EQ(result.status, 0) << result;
    return scratch_.within(lines(result.output));
  }

  ScratchFolder scratch_;
};

TEST_F(Folders, TheCurrentOneIsSearchedUnlessOthersAreNamed) {
  EXPECT_EQ(sorted(foundIn({})), sorted({"one/a.txt", "one/inner/b.txt", "two/c.txt"}));
  EXPECT_EQ(sorted(foundIn({}, "one/inner")), sorted({"one/inner/b.txt"}));
  EXPECT_EQ(sorted(foundIn({scratch_.at("two")}, "one")), sorted({"two/c.txt"}));
}

TEST_F(Folders, AreAllSearchedWhenSeveralAreNamed) {
  EXPECT_EQ(sorted(foundIn({scratch_.at("one/inner"), scratch_.at("two")})),
            sorted({"one/inner/b.txt", "two/c.txt"}));
}

TEST_F(Folders, ThatOverlapGiveEachFileOnce) {
  const Texts all = {"one/a.txt", "one/inner/b.txt"};
  EXPECT_EQ(sorted(foundIn({"one", "one/inner"})), all);
  EXPECT_EQ(sorted(foundIn({"one/inner", "one"})), all);
  EXPECT_EQ(sorted(foundIn({"one", "one"})), all);
  EXPECT_EQ(sorted(foundIn({"one", scratch_.at("one/")})), all);
}

TEST_F(Folders, OfNamesThatBeginAlikeDoNotOverlap) {
  scratch_.file("one more/d.txt");
  EXPECT_EQ(sorted(foundIn({"two", "one more", "one/inner"})),
            sorted({"two/c.txt", "one more/d.txt", "one/inner/b.txt"}));
}

TEST_F(Folders, AreNamedInWhateverWayTheSystemKnows) {
  const Texts expected = {"two/c.txt"};
  for (const char* name : {"two", "two/", "two//", "./two", "one/../two", "two/."}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(foundIn({name}), expected);
  }
  EXPECT_EQ(foundIn({"../two"}, "one"), expected);
  EXPECT_EQ(foundIn({"."}, "two"), expected);
}

TEST_F(Folders, MayHaveSpacesAndOtherScriptsInTheirNames) {
  for (const std::string name : {"with spaces ", "東京", "tab\tand\nnewline", "-dash", "%41"}) {
    SCOPED_TRACE(name);
    scratch_.file(name + "/d.txt");
    const Result result = run({.arguments = {"find", kEveryText, "--in", name, "--show", "kMDItemFSName"},
                               .folder = scratch_.path()});
    EXPECT_EQ(result.output, "d.txt\n") << result;
  }
}

TEST_F(Folders, ThatAreSymbolicLinksAreFollowed) {
  scratch_.link("link", scratch_.at("two"));
  EXPECT_EQ(sorted(foundIn({"link"})), sorted({"two/c.txt"}));
  EXPECT_EQ(sorted(foundIn({"link", "two"})), sorted({"two/c.txt"}));
}

TEST_F(Folders, ThatAreMissingAreNamed) {
  expectError(find({kEveryText, "--in", scratch_.at("none")}),
              "--in '" + scratch_.at("none") + "': No such file or directory; name a folder that exists");
  scratch_.link("dangling", "nowhere");
  expectError(find({kEveryText, "--in", scratch_.at("dangling")}),
              "--in '" + scratch_.at("dangling") + "': No such file or directory; name a folder that exists");
}

TEST_F(Folders, AreAllLookedAtBeforeTheSearchBegins) {
  expectError(find({kEveryText, "--in", scratch_.at("one"), "--in", scratch_.at("none")}),
              "--in '" + scratch_.at("none") + "': No such file or directory; name a folder that exists");
}

TEST_F(Folders, MayNotBeFiles) {
  const std::string file = scratch_.at("one/a.txt");
  expectError(find({kEveryText, "--in", file}),
              "--in '" + file + "': not a folder; name the folder it is in");
}

TEST_F(Folders, ThatLeadInCirclesAreNamed) {
  scratch_.link("circle", "circle");
  expectError(find({kEveryText, "--in", scratch_.at("circle")}),
              "--in '" + scratch_.at("circle") +
                  "': Too many levels of symbolic links; name a folder that can be read");
}

TEST_F(Folders, OfTooLongANameAreNamed) {
  const std::string name(300, 'x');
  expectError(find({kEveryText, "--in", scratch_.at(name)}),
              "--in '" + scratch_.at(name) + "': File name too long; name a folder that can be read");
}

TEST_F(Folders, OfTheUserAreWhatHOMENames) {
  const auto findWith = [](const std::string& home) {
    return run({.arguments = {home, files.program, "find", kEveryText, "--scope", "computer,home"},
                .program = "/usr/bin/env"});
  };
  const std::string toDo = "; set it to the path of your folder, or name the folder with --in";
  expectError(findWith("--unset=HOME"), "--scope home: HOME is not set" + toDo);
  expectError(findWith("HOME="), "--scope home: HOME is not set" + toDo);
  expectError(findWith("HOME=two"), "--scope home: HOME is 'two', which does not start with /" + toDo);
  const std::string missing = scratch_.at("none");
  expectError(findWith("HOME=" + missing),
              "--scope home: HOME is '" + missing + "', which is no folder" + toDo);
}

// Root reads everything; without the two capabilities that let it, it obeys the modes of its own files.
TEST_F(Folders, ThatMayNotBeReadAreNamed) {
  for (const mode_t mode : {0000, 0100, 0400}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(chmod(scratch_.at("two").c_str(), mode), 0);
    expectError(run({.arguments = {"find", kEveryText, "--in", scratch_.at("two")}, .unprivileged = true}),
                "--in '" + scratch_.at("two") + "': Permission denied; name a folder that you may read");
  }
  chmod(scratch_.at("two").c_str(), 0700);
}

TEST_F(Folders, BelowThatMayNotBeReadAreNamed) {
  const Launch what{.arguments = {"find", kEveryText, "--show", "kMDItemFSName", "--in", scratch_.path()},
                    .unprivileged = true};
  ASSERT_EQ(chmod(scratch_.at("two").c_str(), 0000), 0);
  const Result one = run(what);
  EXPECT_EQ(one.status, 3);
  EXPECT_EQ(sorted(lines(one.output)), sorted({"a.txt", "b.txt"}));
  const auto complaint = [&](const std::string& name) {
    return "shotlight: " + scratch_.at(name) +
           ": this folder can't be read: Permission denied; what is in it is not searched\n";
  };
  EXPECT_TRUE(matches(one.errors, "2 results in [0-9.]+ s\n" + complaint("two")));

  ASSERT_EQ(chmod(scratch_.at("one/inner").c_str(), 0000), 0);
  const Result two = run(what);
  EXPECT_TRUE(matches(two.errors, "1 result in [0-9.]+ s\n" + complaint("one/inner") + complaint("two")));
  chmod(scratch_.at("two").c_str(), 0700);
  chmod(scratch_.at("one/inner").c_str(), 0700);
}

}  // namespace
