// What limits leave out: by names, by paths, by depth.
#include "standin/coreservices/disk/walk_filter.h"

#include <gtest/gtest.h>

#include "standin/coreservices/disk/walker.h"
#include "tests/standin/coreservices/disk/tree_watcher_fixture.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

bool isExcluded(const std::string& glob, const std::string& path, bool isFolder = false) {
  const size_t slash = path.rfind('/');
  return WalkFilter({.excluded = {glob}})
      .leavesOut("/root", path.substr(0, slash), path.substr(slash + 1), isFolder);
}

TEST(WalkFilter, TakesAPatternWithoutASlashForANameAtAnyDepth) {
  for (const char* const path : {"/root/a.o", "/root/x/y/a.o", "/root/.o"}) {
    EXPECT_TRUE(isExcluded("*.o", path)) << path;
  }
  for (const char* const path : {"/root/a.c", "/root/a.o.c", "/root/A.O"}) {
    EXPECT_FALSE(isExcluded("*.o", path)) << path;
  }
  EXPECT_TRUE(isExcluded("[ab]?", "/root/a1"));
  EXPECT_FALSE(isExcluded("[ab]?", "/root/c1"));
  EXPECT_TRUE(isExcluded("a\\*", "/root/a*"));
  EXPECT_FALSE(isExcluded("a\\*", "/root/ab"));
  EXPECT_TRUE(isExcluded("[", "/root/["));  // no pattern: itself
}

TEST(WalkFilter, TakesAPatternWithASlashForAPathBelowTheFolder) {
  for (const char* const glob :
       {"x/y", "./x/y", "x//y", "/root/x/y", "x/*", "*/y", "**/y", "x/**", "/**/y"}) {
    EXPECT_TRUE(isExcluded(glob, "/root/x/y")) << glob;
  }
  for (const char* const glob :
       {"x", "root/x/y", "/x/y", "y/x", "x/y/**", "*/*/y", "/*/y", "x/", "/", "./", "."}) {
    EXPECT_FALSE(isExcluded(glob, "/root/x/y")) << glob;
  }
}

TEST(WalkFilter, HasTwoStarsStandForAnyNumberOfFolders) {
  for (const char* const path : {"/root/a/z", "/root/a/b/z", "/root/a/b/c/d/z"}) {
    EXPECT_TRUE(isExcluded("a/**/z", path)) << path;
    EXPECT_TRUE(isExcluded("**/**/z", path)) << path;
  }
  EXPECT_FALSE(isExcluded("a/**/z", "/root/b/a/z"));
  EXPECT_FALSE(isExcluded("a/**", "/root/a"));
  EXPECT_TRUE(isExcluded("**/z", "/root/z"));
}

// A pattern that tries every way through a path would not end.
TEST(WalkFilter, TakesNoLongTimeForManyStars) {
  std::string glob, path = "/root";
  for (int i = 0; i < 40; ++i) glob += "**/a/";
  for (int i = 0; i < 400; ++i) path += "/a";
  EXPECT_TRUE(isExcluded(glob + "a", path));
  EXPECT_FALSE(isExcluded(glob + "b", path));
}

TEST(WalkFilter, TakesAPatternThatEndsWithASlashForFolders) {
  for (const char* const glob : {"x/", "x//", "/root/x/", "./x/"}) {
    EXPECT_TRUE(isExcluded(glob, "/root/x", true)) << glob;
    EXPECT_FALSE(isExcluded(glob, "/root/x", false)) << glob;
  }
}

TEST(WalkFilter, KnowsOfEveryFolderOnThePath) {
  const WalkFilter filter({.excluded = {"x", "a/b"}});
  EXPECT_FALSE(filter.reaches("/root", "/root/x"));
  EXPECT_FALSE(filter.reaches("/root", "/root/d/x/e/f"));
  EXPECT_FALSE(filter.reaches("/root", "/root/a/b/c"));
  EXPECT_TRUE(filter.reaches("/root", "/root/c/a/b"));
  EXPECT_TRUE(filter.reaches("/root/x", "/root/x/y"));
  EXPECT_TRUE(filter.reaches("/", "/a/c"));
  EXPECT_FALSE(filter.reaches("/", "/a/b"));
  EXPECT_FALSE(filter.enters("/root", "/root/a/b"));
  EXPECT_TRUE(filter.enters("/root", "/root/a"));
}

TEST(WalkFilter, CountsFoldersDown) {
  const WalkFilter filter({.depth = 2});
  EXPECT_TRUE(filter.reaches("/root", "/root/a/b"));
  EXPECT_FALSE(filter.reaches("/root", "/root/a/b/c"));
  EXPECT_TRUE(filter.reaches("/", "/a/b"));
  EXPECT_FALSE(filter.reaches("/", "/a/b/c"));
  EXPECT_TRUE(filter.enters("/root", "/root/a"));
  EXPECT_FALSE(filter.enters("/root", "/root/a/b"));
}

TEST(WalkFilter, LeavesOutHiddenFoldersWithAllThatIsInThem) {
  const WalkFilter filter({.hidden = false});
  EXPECT_FALSE(filter.reaches("/root", "/root/.a"));
  EXPECT_FALSE(filter.reaches("/root", "/root/.a/b"));
  EXPECT_TRUE(filter.reaches("/root/.a", "/root/.a/b"));
  EXPECT_TRUE(filter.reaches("/root", "/root/a."));
}

class Filtered : public Watched {
 protected:
  Filtered() {
    for (const char* const file : {"a/b/c/f", "a/f", ".h/f", "x/y/f", "f"}) scratch.file(file);
  }

  // "f" of what is found, "a/" of what is walked through.
  std::vector<std::string> walk(const WalkLimits& limits, const std::string& root) const {
    struct Visitor : WalkVisitor {
      void entered(const std::string& path, size_t) override { seen.push_back(path + '/'); }
      void left() override {}
      void found(int, const std::string& path, const char* name) override {
        seen.push_back(path + '/' + name);
      }
      std::vector<std::string> seen;
    } visitor;
    const WalkFilter filter(limits);
    const std::vector<FileId> none;
    for (Walk walk(root, none, visitor, filter, scratch.path()); walk.step();) {
    }
    return scratch.within(visitor.seen);
  }
  std::vector<std::string> walk(const WalkLimits& limits) const { return walk(limits, scratch.path()); }
};

TEST_F(Filtered, WalkComesToNothingThatIsLeftOut) {
  EXPECT_EQ(walk({.excluded = {"f", "x"}, .hidden = false}),
            (Texts{"", "a", "a/", "a/b", "a/b/", "a/b/c", "a/b/c/"}));
  EXPECT_EQ(walk({.depth = 1}), (Texts{"", ".h", "a", "f", "x"}));
  EXPECT_EQ(walk({.excluded = {"*h", "x/"}, .depth = 2}), (Texts{"", "a", "a/", "a/b", "a/f", "f"}));
}

TEST_F(Filtered, WalkFromFurtherDownCountsFromTheFolderThatIsSearched) {
  EXPECT_EQ(walk({.depth = 3}, scratch.at("a")), (Texts{"a/", "a/b", "a/b/", "a/b/c", "a/f"}));
  EXPECT_EQ(walk({.excluded = {"a/b"}}, scratch.at("a")), (Texts{"a/", "a/f"}));
  EXPECT_EQ(walk({.excluded = {"b/c"}}, scratch.at("a")).size(), 7u);
}

TEST_F(Filtered, FoldersAreNotWatched) {
  const size_t all = watchesOf(TreeWatcher({scratch.path()}, {}));
  EXPECT_EQ(watchesOf(TreeWatcher({scratch.path()}, {}, WalkFilter({.excluded = {"b"}}))), all - 2);
  EXPECT_EQ(watchesOf(TreeWatcher({scratch.path()}, {}, WalkFilter({.depth = 1}))), all - 6);
  EXPECT_EQ(watchesOf(TreeWatcher({scratch.path()}, {}, WalkFilter({.hidden = false}))), all - 1);
  EXPECT_EQ(watchesOf(TreeWatcher({scratch.path()}, {}, WalkFilter({.oneFileSystem = true}))), all);
}

TEST_F(Filtered, FoldersAreWatchedWhereTheyAreNamed) {
  TreeWatcher watcher({scratch.path(), scratch.at("a/b")}, {}, WalkFilter({.excluded = {"b"}, .depth = 1}));
  scratch.file("a/b/new");
  scratch.file("a/new");
  scratch.file("a/b/c/new");
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/", "touched a/b/new"}));
}

TEST_F(Filtered, FoldersAreWatchedFromWhenTheyAreMovedToWhereTheyCount) {
  TreeWatcher watcher({scratch.path()}, {}, WalkFilter({.excluded = {"x"}}));
  rename("x", "z");
  rename("a", "x");
  EXPECT_EQ(missingFrom(take(watcher), {"touched z/y/f"}), Texts{});
  scratch.file("z/y/new");
  scratch.file("x/b/new");
  EXPECT_EQ(take(watcher), (Texts{"touched z/y/", "touched z/y/new"}));
}

}  // namespace
}  // namespace standin::metadata
