// What happens when the system can't go on: lost events, no watches, no instance, mounted folders.
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "tests/standin/coreservices/disk/tree_watcher_fixture.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

class TreeWatcherLimits : public Watched {};

TEST_F(TreeWatcherLimits, LostEventsAreOneRescanForEachRoot) {
  scratch.folder("a");
  scratch.folder("b");
  TreeWatcher watcher({scratch.at("a"), scratch.at("b"), scratch.at("missing")}, {});
  scratch.file("a/f");
  watcher.forceRescan();
  EXPECT_EQ(take(watcher), (Texts{"rescan a/", "rescan b/", "rescan missing/"}));
  EXPECT_EQ(take(watcher), Texts{});
}

TEST_F(TreeWatcherLimits, FoldersWhoseAppearanceWasLostAreFollowed) {
  scratch.file("a/gone/f");
  scratch.file("a/renamed/f");
  TreeWatcher watcher({scratch.at("a"), scratch.at("late")}, {});
  const size_t watches = watchesOf(watcher);
  scratch.file("a/new/deep/f");
  scratch.file("late/f");
  rename("a/renamed", "a/r");
  rename("a/gone", "gone");
  watcher.forceRescan();
  take(watcher);
  EXPECT_EQ(watchesOf(watcher), watches + 2);
  append("a/new/deep/f");
  append("late/f");
  append("a/r/f");
  append("gone/f");
  EXPECT_EQ(take(watcher), (Texts{"touched a/new/deep/f", "touched late/f", "touched a/r/f"}));
}

TEST_F(TreeWatcherLimits, AnOverflowOfTheSystemsQueueIsARescan) {
  int limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  if (limit <= 0 || limit > 200'000) GTEST_SKIP() << "the queue is too long to be filled";
  scratch.file("f");
  scratch.file("g");
  TreeWatcher watcher({scratch.path()}, {});
  for (int i = 0; i <= limit / 2; ++i) {  // the same event twice running would be one
    ASSERT_EQ(::truncate(scratch.at("f").c_str(), 1), 0);
    ASSERT_EQ(::truncate(scratch.at("g").c_str(), 1), 0);
  }
  scratch.file("lost/f");
  EXPECT_EQ(take(watcher), Texts{"rescan ./"});
  EXPECT_EQ(take(watcher), Texts{});
  append("lost/f");
  EXPECT_EQ(take(watcher), Texts{"touched lost/f"});
}

TEST_F(TreeWatcherLimits, AWatcherWithoutAnInstanceIsDeadAndSaysWhy) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  TreeWatcher watcher({scratch.path()}, {});
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(watcher.descriptor(), -1);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "fs.inotify.max_user_instances", watcher.reason());
  scratch.file("f");
  watcher.forceRescan();
  EXPECT_EQ(take(watcher), Texts{});
}

TEST_F(TreeWatcherLimits, AFolderThatCannotBeReadForLackOfFilesIsRescannedWithAReason) {
  TreeWatcher watcher({scratch.path()}, {});
  scratch.file("a/f");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  const std::vector<std::string> changes = take(watcher);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(changes, (Texts{"touched ./", "rescan a/"}));
  const std::string beginning = "can't follow the changes in " + scratch.at("a: ");
  EXPECT_EQ(watcher.reason().substr(0, beginning.size()), beginning);
}

TEST_F(TreeWatcherLimits, FoldersBeyondTheLimitOfWatchesAreRescannedWithAReason) {
  for (const char* name : {"a/f", "b/f", "c/f"}) scratch.file(name);
  const bool could = runApart([&] {
    const size_t above = static_cast<size_t>(std::count(scratch.path().begin(), scratch.path().end(), '/'));
    std::ofstream limit("/proc/sys/user/max_inotify_watches");
    if (!(limit << above + 2).flush()) GTEST_SKIP();  // "/" and the others above, the root, and one in it
    TreeWatcher watcher({scratch.path()}, {});
    const std::vector<TreeChange> changes = watcher.take();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].kind, TreeChange::Rescan);
    EXPECT_EQ(changes[1].kind, TreeChange::Rescan);
    EXPECT_EQ(watcher.reason(), "can't follow the changes in " + changes[0].path +
                                    ": the system has no watches left (raise fs.inotify.max_user_watches)");
    EXPECT_EQ(watcher.reason(), "");
    for (const char* name : {"a/f", "b/f", "c/f"}) append(name);
    EXPECT_EQ(watcher.take().size(), 1u);
    for (const char* name : {"a", "b", "c"}) remove(name);
    take(watcher);
    scratch.file("d/f");  // there are watches again
    take(watcher);
    append("d/f");
    EXPECT_EQ(take(watcher), Texts{"touched d/f"});
    EXPECT_EQ(watcher.reason(), "");
  });
  if (!could) GTEST_SKIP() << "the system allows no limits of our own";
}

TEST_F(TreeWatcherLimits, AnUnmountedFolderIsRescannedAndWhatWasBeneathFollowed) {
  scratch.file("m/beneath");
  const bool could = runApart([&] {
    if (::mount("none", scratch.at("m").c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP();
    scratch.file("m/a/f");
    TreeWatcher watcher({scratch.path()}, {});
    append("m/a/f");
    EXPECT_EQ(take(watcher), Texts{"touched m/a/f"});
    ASSERT_EQ(::umount(scratch.at("m").c_str()), 0);
    EXPECT_EQ(missingFrom(take(watcher), {"rescan m/"}), Texts{});
    append("m/beneath");
    EXPECT_EQ(take(watcher), Texts{"touched m/beneath"});
  });
  if (!could) GTEST_SKIP() << "nothing can be mounted";
}

TEST_F(TreeWatcherLimits, AFolderThatIsMountedBelowItselfIsFollowedOnce) {
  scratch.file("a/f");
  scratch.folder("a/b/again");
  const bool could = runApart([&] {
    if (::mount(scratch.path().c_str(), scratch.at("a/b/again").c_str(), nullptr, MS_BIND, nullptr) != 0) {
      GTEST_SKIP();
    }
    TreeWatcher watcher({scratch.path()}, {});
    append("a/b/again/a/f");
    EXPECT_EQ(take(watcher), Texts{"touched a/f"});
    EXPECT_EQ(take(watcher), Texts{});
  });
  if (!could) GTEST_SKIP() << "nothing can be mounted";
}

TEST_F(TreeWatcherLimits, AFolderThatIsMountedElsewhereOnTheWayToARootIsStillFollowed) {
  scratch.file("a/q/f");
  scratch.folder("p");
  const bool could = runApart([&] {
    if (::mount(scratch.at("a").c_str(), scratch.at("p").c_str(), nullptr, MS_BIND, nullptr) != 0) {
      GTEST_SKIP();
    }
    TreeWatcher watcher({scratch.at("a"), scratch.at("p/q")}, {});
    scratch.file("a/g", "text");
    take(watcher);
    append("a/g");
    append("p/q/f");
    EXPECT_EQ(take(watcher), (Texts{"touched a/g", "touched a/q/f"}));
  });
  if (!could) GTEST_SKIP() << "nothing can be mounted";
}

}  // namespace
}  // namespace standin::metadata
