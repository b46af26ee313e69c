// What is followed: roots, links, excluded folders, permissions.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "tests/standin/coreservices/disk/tree_watcher_fixture.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;

class TreeWatcherScope : public Watched {};

TEST_F(TreeWatcherScope, RootsAreWatchedAndNothingBesideThem) {
  scratch.folder("a");
  scratch.folder("b");
  scratch.folder("ab");
  TreeWatcher watcher({scratch.at("a"), scratch.at("b/")}, {});
  scratch.file("a/f");
  scratch.file("ab/f");
  scratch.file("f");
  scratch.file("b/f");
  EXPECT_EQ(take(watcher), (Texts{"touched a/", "touched a/f", "touched b/", "touched b/f"}));
}

TEST_F(TreeWatcherScope, ARootInAnotherIsToldOnce) {
  scratch.folder("a/b/c");
  TreeWatcher watcher({scratch.at("a/b"), scratch.at("a"), scratch.at("a"), scratch.at("a/b/c")}, {});
  scratch.file("a/b/c/f");
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/c/", "touched a/b/c/f"}));
  rename("a/b", "b");
  EXPECT_EQ(take(watcher), (Texts{"touched a/", "gone a/b/"}));
}

TEST_F(TreeWatcherScope, TheTopmostFolderCanBeARoot) {
  std::vector<std::string> excluded;  // all but what leads to the scratch folder
  for (fs::path at = scratch.path(); at.has_relative_path(); at = at.parent_path()) {
    for (const fs::directory_entry& entry : fs::directory_iterator(at.parent_path())) {
      if (entry.path() != at) excluded.push_back(entry.path());
    }
  }
  TreeWatcher watcher({"/", scratch.path()}, excluded);
  scratch.file("a/f");
  EXPECT_EQ(missingFrom(take(watcher), {"touched ./", "touched a/", "touched a/f"}), Texts{});
  watcher.forceRescan();
  EXPECT_EQ(missingFrom(take(watcher), {"rescan //"}), Texts{});  // "/", a folder
  append("a/f");
  EXPECT_EQ(missingFrom(take(watcher), {"touched a/f"}), Texts{});
}

TEST_F(TreeWatcherScope, NoRootsAndRelativeRootsTellNothing) {
  TreeWatcher watcher({"", "tmp", "."}, {"", "x"});
  EXPECT_GE(watcher.descriptor(), 0);
  scratch.file("f");
  EXPECT_EQ(take(watcher), Texts{});
}

TEST_F(TreeWatcherScope, RootsNamedThroughLinksAreToldByTheirRealPaths) {
  scratch.folder("a/b");
  scratch.link("l", scratch.at("a"));
  TreeWatcher watcher({scratch.at("l/b"), scratch.at("l/missing/../c"), scratch.at("a/./b")}, {});
  scratch.file("a/b/f");
  scratch.folder("a/c");
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/", "touched a/b/f", "touched a/c/"}));
}

TEST_F(TreeWatcherScope, SymbolicLinksAreNotFollowed) {
  scratch.folder("a/b");
  scratch.folder("out");
  scratch.link("a/b/up", scratch.path());
  scratch.link("a/loop", "loop");
  scratch.link("a/out", scratch.at("out"));
  TreeWatcher watcher({scratch.at("a")}, {});
  scratch.link("a/b/new", scratch.at("out"));
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/", "touched a/b/new"}));
  scratch.file("out/f");
  EXPECT_EQ(take(watcher), Texts{});
}

TEST_F(TreeWatcherScope, AnExcludedFolderIsAnEntryWhoseContentIsLeftOut) {
  scratch.folder("x/deep");
  TreeWatcher watcher({scratch.path()}, {scratch.at("x"), scratch.at("y")});
  scratch.file("x/f");
  scratch.file("x/deep/f");
  EXPECT_EQ(take(watcher), Texts{});
  scratch.file("y/f");
  ASSERT_EQ(::chmod(scratch.at("x").c_str(), 0700), 0);
  EXPECT_EQ(take(watcher), (Texts{"touched ./", "touched y/", "touched x/"}));
  rename("x", "z");
  // What a new folder holds comes in the order in which the file system lists it.
  EXPECT_EQ(sorted(take(watcher)), sorted({"gone x/", "touched ./", "touched z/", "touched z/f",
                                           "touched z/deep/", "touched z/deep/f"}));
}

TEST_F(TreeWatcherScope, ARootInAnExcludedFolderIsWatched) {
  scratch.folder("x/in");
  TreeWatcher watcher({scratch.path(), scratch.at("x/in"), scratch.at("y")},
                      {scratch.at("x"), scratch.at("y")});
  scratch.file("x/f");
  scratch.file("x/in/f");
  EXPECT_EQ(take(watcher), (Texts{"touched x/in/", "touched x/in/f"}));
  scratch.file("y/f");
  EXPECT_EQ(take(watcher), (Texts{"touched ./", "touched y/", "touched y/f"}));
  remove("x");
  EXPECT_EQ(take(watcher), (Texts{"touched ./", "gone x/"}));
  scratch.file("x/in/f");
  EXPECT_EQ(take(watcher), (Texts{"touched ./", "touched x/", "touched x/in/", "touched x/in/f"}));
  rename("x", "z");
  rename("z", "x");
  ASSERT_EQ(::chmod(scratch.at("x").c_str(), 0700), 0);
  const std::vector<std::string> changes = take(watcher);  // the inner root last: it isn't below the outer
  EXPECT_EQ(missingFrom(changes, {"rescan x/", "touched x/in/", "touched x/in/f"}), Texts{});
  EXPECT_LT(std::find(changes.begin(), changes.end(), "rescan x/"),
            std::find(changes.begin(), changes.end(), "touched x/in/"));
}

TEST_F(TreeWatcherScope, AMissingRootIsTouchedWhenItAppears) {
  TreeWatcher watcher({scratch.at("a/b/c")}, {});
  EXPECT_EQ(take(watcher), Texts{});
  scratch.file("a/other/f");
  EXPECT_EQ(take(watcher), Texts{});
  scratch.file("a/b/c/d/f");
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/c/", "touched a/b/c/d/", "touched a/b/c/d/f"}));
  append("a/b/c/d/f");
  EXPECT_EQ(take(watcher), Texts{"touched a/b/c/d/f"});
}

TEST_F(TreeWatcherScope, ARootIsWaitedForWhileAFileHasItsName) {
  scratch.file("a");
  TreeWatcher watcher({scratch.at("a")}, {});
  append("a");
  remove("a");
  EXPECT_EQ(take(watcher), Texts{});
  scratch.file("a/f");
  EXPECT_EQ(take(watcher), (Texts{"touched a/", "touched a/f"}));
}

TEST_F(TreeWatcherScope, ADeletedRootIsGoneAndWaitedFor) {
  scratch.file("a/f");
  TreeWatcher watcher({scratch.at("a")}, {});
  remove("a");
  EXPECT_EQ(take(watcher), Texts{"gone a/"});
  scratch.file("a/g");
  EXPECT_EQ(take(watcher), (Texts{"touched a/", "touched a/g"}));
  remove("a");
  scratch.file("a/h");
  EXPECT_EQ(take(watcher), (Texts{"rescan a/", "touched a/h"}));
}

TEST_F(TreeWatcherScope, ARootWhoseParentIsRenamedIsGoneAndComesBack) {
  scratch.file("a/b/c/f");
  TreeWatcher watcher({scratch.at("a/b/c"), scratch.at("a/d")}, {});
  rename("a", "z");
  EXPECT_EQ(take(watcher), (Texts{"gone a/b/c/", "gone a/d/"}));
  append("z/b/c/f");
  EXPECT_EQ(take(watcher), Texts{});
  rename("z", "a");
  EXPECT_EQ(take(watcher), (Texts{"touched a/b/c/", "touched a/b/c/f"}));
}

TEST_F(TreeWatcherScope, ARenamedRootIsGoneAndComesBack) {
  scratch.file("a/f");
  TreeWatcher watcher({scratch.at("a")}, {});
  rename("a", "z");
  EXPECT_EQ(take(watcher), Texts{"gone a/"});
  scratch.file("z/g");
  EXPECT_EQ(take(watcher), Texts{});
  rename("z", "a");
  EXPECT_EQ(sorted(take(watcher)), sorted({"touched a/", "touched a/f", "touched a/g"}));
}

class TreeWatcherPermissions : public TreeWatcherScope {
 protected:
  void setMode(std::string_view name, mode_t mode) const {
    ASSERT_EQ(::chmod(scratch.at(name).c_str(), mode), 0);
  }

 private:
  const OrdinaryUser user_;
};

TEST_F(TreeWatcherPermissions, AnUnreadableFolderIsFollowedWhenItBecomesReadable) {
  scratch.file("a/f");
  setMode("a", 0300);
  TreeWatcher watcher({scratch.path()}, {});
  scratch.file("a/g");
  EXPECT_EQ(take(watcher), Texts{});
  setMode("a", 0700);
  EXPECT_EQ(sorted(take(watcher)), sorted({"touched a/", "touched a/f", "touched a/g"}));
  append("a/g");
  EXPECT_EQ(take(watcher), Texts{"touched a/g"});
  EXPECT_EQ(watcher.reason(), "");
}

TEST_F(TreeWatcherPermissions, AnUnreadableRootIsFollowedWhenItBecomesReadable) {
  scratch.file("a/f");
  setMode("a", 0300);
  TreeWatcher watcher({scratch.at("a")}, {});
  setMode("a", 0700);
  EXPECT_EQ(take(watcher), (Texts{"touched a/", "touched a/f"}));
  append("a/f");
  EXPECT_EQ(take(watcher), Texts{"touched a/f"});
}

TEST_F(TreeWatcherPermissions, ARootBelowAnUnreadableFolderIsFollowedAndItsEndSeen) {
  scratch.file("a/b/f");
  scratch.file("a/c/f");
  setMode("a", 0300);
  TreeWatcher watcher({scratch.at("a/b"), scratch.at("a/c")}, {});
  append("a/b/f");
  EXPECT_EQ(take(watcher), Texts{"touched a/b/f"});
  rename("a/b", "b");
  remove("a/c");
  EXPECT_EQ(take(watcher), (Texts{"gone a/b/", "gone a/c/"}));
  append("b/f");
  EXPECT_EQ(take(watcher), Texts{});
  setMode("a", 0700);
}

}  // namespace
}  // namespace standin::metadata
