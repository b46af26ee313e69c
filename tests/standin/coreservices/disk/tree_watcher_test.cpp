#include <fcntl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <thread>

#include "tests/standin/coreservices/disk/tree_watcher_fixture.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;

// Everything in the scratch folder's "in"; "out" is beside it.
class TreeWatcherTest : public Watched {
 protected:
  TreeWatcherTest() {
    scratch.file("in/old", "text");
    scratch.file("in/d/e/f", "text");
    scratch.folder("out");
    watcher = std::make_unique<TreeWatcher>(std::vector{scratch.at("in")}, std::vector<std::string>{});
  }
  std::vector<std::string> take() const { return Watched::take(*watcher); }

  void exchange(std::string_view left, std::string_view right) const {
    constexpr unsigned kExchange = 2;
    ASSERT_EQ(::syscall(SYS_renameat2, AT_FDCWD, scratch.at(left).c_str(), AT_FDCWD,
                        scratch.at(right).c_str(), kExchange),
              0);
  }

  std::unique_ptr<TreeWatcher> watcher;
};

TEST_F(TreeWatcherTest, WhatIsThereAtFirstIsNotTold) {
  EXPECT_EQ(take(), Texts{});
  EXPECT_EQ(watcher->reason(), "");
}

TEST_F(TreeWatcherTest, TheDescriptorIsReadableWhileSomethingIsToBeTaken) {
  const bool could = runApart([] {
    // The folders above the root are watched, too: none that others write to.
    const std::string temporary = fs::temp_directory_path();
    if (::mount("none", temporary.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP();
    const ScratchFolder own;
    own.file("in/d/e/f");
    TreeWatcher watcher({own.at("in")}, {});
    EXPECT_FALSE(isReadable(watcher));
    own.file("in/new");
    EXPECT_TRUE(isReadable(watcher));
    EXPECT_EQ(watcher.take().size(), 2u);
    EXPECT_FALSE(isReadable(watcher));
    fs::rename(own.at("in/d"), own.at("d"));
    EXPECT_TRUE(isReadable(watcher));
    EXPECT_EQ(watcher.take().size(), 2u);
    EXPECT_FALSE(isReadable(watcher));
    own.file("d/e/f", "text");
    EXPECT_FALSE(isReadable(watcher));
  });
  if (!could) GTEST_SKIP() << "nothing can be mounted";
}

TEST_F(TreeWatcherTest, TheDescriptorIsClosedOnExec) {
  EXPECT_TRUE(::fcntl(watcher->descriptor(), F_GETFD) & FD_CLOEXEC);
}

TEST_F(TreeWatcherTest, ACreatedFileIsTouchedAndItsFolder) {
  scratch.file("in/d/new", "text");
  EXPECT_EQ(take(), (Texts{"touched in/d/", "touched in/d/new"}));
}

TEST_F(TreeWatcherTest, AFileThatIsWrittenIsTouched) {
  scratch.file("in/old", "another text");
  EXPECT_EQ(take(), Texts{"touched in/old"});
  append("in/d/e/f");
  EXPECT_EQ(take(), Texts{"touched in/d/e/f"});
  ASSERT_EQ(::truncate(scratch.at("in/old").c_str(), 1), 0);
  EXPECT_EQ(take(), Texts{"touched in/old"});
}

TEST_F(TreeWatcherTest, AFileThatIsWrittenThroughMemoryIsTouched) {
  const int file = ::open(scratch.at("in/old").c_str(), O_RDWR | O_CLOEXEC);
  void* const memory = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ASSERT_NE(memory, MAP_FAILED);
  *static_cast<char*>(memory) = 'x';
  ::munmap(memory, 1);
  ::close(file);
  EXPECT_EQ(take(), Texts{"touched in/old"});
}

TEST_F(TreeWatcherTest, AFileThatIsOnlyReadIsNotTold) {
  std::string text;
  std::ifstream(scratch.at("in/old")) >> text;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(scratch.at("in"))) entry.status();
  EXPECT_EQ(take(), Texts{});
}

TEST_F(TreeWatcherTest, PermissionsDatesAndExtendedAttributesAreTold) {
  ASSERT_EQ(::chmod(scratch.at("in/old").c_str(), 0600), 0);
  EXPECT_EQ(take(), Texts{"touched in/old"});
  const timespec dates[2] = {{1, 0}, {2, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, scratch.at("in/d/e/f").c_str(), dates, 0), 0);
  EXPECT_EQ(take(), Texts{"touched in/d/e/f"});
  if (::setxattr(scratch.at("in/old").c_str(), "user.note", "x", 1, 0) != 0) GTEST_SKIP() << "no attributes";
  EXPECT_EQ(take(), Texts{"touched in/old"});
}

TEST_F(TreeWatcherTest, AFoldersOwnAttributesAreTold) {
  ASSERT_EQ(::chmod(scratch.at("in/d").c_str(), 0700), 0);
  ASSERT_EQ(::chmod(scratch.at("in").c_str(), 0700), 0);
  EXPECT_EQ(take(), (Texts{"touched in/d/", "touched in/"}));
}

TEST_F(TreeWatcherTest, ADeletedFileIsGone) {
  remove("in/d/e/f");
  EXPECT_EQ(take(), (Texts{"touched in/d/e/", "gone in/d/e/f"}));
}

TEST_F(TreeWatcherTest, ARenamedFileIsGoneAndTouched) {
  rename("in/old", "in/d/new");
  EXPECT_EQ(take(), (Texts{"touched in/", "gone in/old", "touched in/d/", "touched in/d/new"}));
}

TEST_F(TreeWatcherTest, AFileThatIsReplacedByAnotherIsTouched) {
  scratch.file("out/new");
  rename("out/new", "in/old");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/old"}));
  remove("in/old");
  scratch.file("in/old");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/old"}));
}

TEST_F(TreeWatcherTest, FilesThatAreMovedInAreTouchedAndThoseMovedOutGone) {
  scratch.file("out/new");
  rename("out/new", "in/new");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/new"}));
  rename("in/new", "out/new");
  EXPECT_EQ(take(), (Texts{"touched in/", "gone in/new"}));
  append("out/new");
  EXPECT_EQ(take(), Texts{});
}

TEST_F(TreeWatcherTest, HardAndSymbolicLinksAreEntries) {
  fs::create_hard_link(scratch.at("in/old"), scratch.at("in/hard"));
  scratch.link("in/soft", scratch.at("in/d"));
  EXPECT_EQ(take(), (Texts{"touched in/hard", "touched in/", "touched in/soft"}));
}

TEST_F(TreeWatcherTest, EachPathIsToldOnceInTheOrderOfItsLastEvent) {
  append("in/old");
  append("in/d/e/f");
  append("in/old");
  ASSERT_EQ(::chmod(scratch.at("in/old").c_str(), 0600), 0);
  EXPECT_EQ(take(), (Texts{"touched in/d/e/f", "touched in/old"}));
}

TEST_F(TreeWatcherTest, WhatComesAndGoesBetweenIsGone) {
  scratch.file("in/new");
  remove("in/new");
  EXPECT_EQ(take(), (Texts{"touched in/", "gone in/new"}));
}

TEST_F(TreeWatcherTest, ATreeThatIsMadeQuicklyIsToldWhole) {
  scratch.file("in/a/b/c/f");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/a/", "touched in/a/b/", "touched in/a/b/c/",
                           "touched in/a/b/c/f"}));
  append("in/a/b/c/f");
  EXPECT_EQ(take(), Texts{"touched in/a/b/c/f"});
}

TEST_F(TreeWatcherTest, NothingIsLostOfTreesThatAreMadeMeanwhile) {
  constexpr int kTrees = 100;
  std::thread maker([&] {
    for (int i = 0; i < kTrees; ++i) scratch.file("in/t" + std::to_string(i) + "/a/b/f");
  });
  std::set<std::string> files;
  while (files.size() < kTrees && isReadable(*watcher, 60'000)) {
    for (const TreeChange& change : watcher->take()) {
      if (change.path.ends_with("/a/b/f")) files.insert(change.path);
    }
  }
  maker.join();
  EXPECT_EQ(files.size(), size_t{kTrees});
}

TEST_F(TreeWatcherTest, ATreeThatIsMovedInIsToldWholeAndFollowed) {
  scratch.file("out/a/b/f");
  rename("out/a", "in/a");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/a/", "touched in/a/b/", "touched in/a/b/f"}));
  append("in/a/b/f");
  EXPECT_EQ(take(), Texts{"touched in/a/b/f"});
}

TEST_F(TreeWatcherTest, ATreeThatIsMovedOutIsGoneAndNoLongerFollowed) {
  const size_t watches = watchesOf(*watcher);
  append("in/d/e/f");
  rename("in/d", "out/d");
  EXPECT_EQ(take(), (Texts{"touched in/", "gone in/d/"}));
  EXPECT_EQ(watchesOf(*watcher), watches - 2);
  append("out/d/e/f");
  EXPECT_EQ(take(), Texts{});
}

TEST_F(TreeWatcherTest, ATreeThatIsDeletedIsOneChange) {
  const size_t watches = watchesOf(*watcher);
  for (int i = 0; i < 20; ++i) scratch.file("in/d/g" + std::to_string(i) + "/f");
  remove("in/d");
  EXPECT_EQ(take(), (Texts{"touched in/", "gone in/d/"}));
  EXPECT_EQ(watchesOf(*watcher), watches - 2);
}

TEST_F(TreeWatcherTest, AFolderThatIsRenamedIsFollowedUnderItsNewName) {
  rename("in/d", "in/n");
  append("in/n/e/f");
  EXPECT_EQ(sorted(take()),
            sorted({"touched in/", "gone in/d/", "touched in/n/", "touched in/n/e/", "touched in/n/e/f"}));
  append("in/n/e/f");
  EXPECT_EQ(take(), Texts{"touched in/n/e/f"});
  scratch.file("in/d");
  EXPECT_EQ(take(), (Texts{"touched in/", "touched in/d"}));
}

TEST_F(TreeWatcherTest, FoldersThatAreMovedIntoEachOtherAreFollowed) {
  rename("in/d/e", "in/e");
  rename("in/d", "in/e/d");
  EXPECT_EQ(sorted(take()),
            sorted({"touched in/", "gone in/d/", "touched in/e/", "touched in/e/f", "touched in/e/d/"}));
  scratch.file("in/e/d/new");
  append("in/e/f");
  EXPECT_EQ(take(), (Texts{"touched in/e/d/", "touched in/e/d/new", "touched in/e/f"}));
}

TEST_F(TreeWatcherTest, AFolderThatIsMovedOnIntoANewOneIsFollowed) {
  scratch.folder("in/a/b");
  rename("in/d", "in/x");
  rename("in/x", "in/a/b/d");
  take();
  append("in/a/b/d/e/f");
  EXPECT_EQ(take(), Texts{"touched in/a/b/d/e/f"});
}

TEST_F(TreeWatcherTest, AFolderThatIsRenamedThereAndBackIsLookedAtAgain) {
  rename("in/d", "in/n");
  rename("in/n", "in/d");
  EXPECT_EQ(missingFrom(take(), {"rescan in/d/", "gone in/n/"}), Texts{});
  append("in/d/e/f");
  EXPECT_EQ(take(), Texts{"touched in/d/e/f"});
}

TEST_F(TreeWatcherTest, AFolderThatIsReplacedByAFileIsLookedAtAgain) {
  remove("in/d");
  scratch.file("in/d");
  EXPECT_EQ(take(), (Texts{"touched in/", "rescan in/d"}));
}

TEST_F(TreeWatcherTest, AFileInPlaceOfAFolderThatIsGoneAgainTakesTheFoldersContentAlong) {
  rename("in/d", "out/d");
  scratch.file("in/d");
  remove("in/d");
  scratch.file("in/d");
  EXPECT_EQ(take(), (Texts{"touched in/", "rescan in/d"}));
}

TEST_F(TreeWatcherTest, AFolderThatReplacesAnEmptyOneIsFollowed) {
  scratch.folder("in/empty");
  take();
  rename("in/d", "in/empty");
  EXPECT_EQ(sorted(take()), sorted({"touched in/", "gone in/d/", "touched in/empty/", "touched in/empty/e/",
                                    "touched in/empty/e/f"}));
  append("in/empty/e/f");
  EXPECT_EQ(take(), Texts{"touched in/empty/e/f"});
}

TEST_F(TreeWatcherTest, ExchangedFilesAreBothTouched) {
  scratch.file("in/new");
  take();
  exchange("in/old", "in/new");
  EXPECT_EQ(sorted(take()), sorted({"touched in/", "touched in/old", "touched in/new"}));
}

TEST_F(TreeWatcherTest, ExchangedFoldersAreFollowedInTheirNewPlaces) {
  scratch.file("in/n/g");
  take();
  exchange("in/d", "in/n");
  EXPECT_EQ(missingFrom(take(), {"rescan in/d/", "rescan in/n/"}), Texts{});
  append("in/n/e/f");
  append("in/d/g");
  EXPECT_EQ(take(), (Texts{"touched in/n/e/f", "touched in/d/g"}));
}

TEST_F(TreeWatcherTest, AFolderThatIsExchangedWithAFileIsFollowed) {
  exchange("in/d", "in/old");
  EXPECT_EQ(missingFrom(take(), {"rescan in/d", "rescan in/old/", "touched in/old/e/f"}), Texts{});
  append("in/old/e/f");
  EXPECT_EQ(take(), Texts{"touched in/old/e/f"});
}

TEST_F(TreeWatcherTest, NamesAreBytes) {
  const std::string names[] = {"new\nline", "bad\xFF\xFE", " ", "\"%s\"", std::string(255, 'x')};
  for (const std::string& name : names) {
    scratch.file("in/" + name + "/" + name);
    EXPECT_EQ(take(), (Texts{"touched in/", "touched in/" + name + "/", "touched in/" + name + "/" + name}));
    append("in/" + name + "/" + name);
    EXPECT_EQ(take(), Texts{"touched in/" + name + "/" + name});
    remove("in/" + name);
    EXPECT_EQ(take(), (Texts{"touched in/", "gone in/" + name + "/"}));
  }
}

TEST_F(TreeWatcherTest, PathsTooLongForTheSystemDoNoHarmAndAreTold) {
  const std::string name(250, 'x');
  int folder = ::open(scratch.at("in").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int below = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = below;
    EXPECT_LE(take().size(), 2u);
  }
  ::close(::openat(folder, "f", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  ::close(folder);
  EXPECT_EQ(take(), Texts{});  // not followed
  EXPECT_TRUE(watcher->reason().ends_with("/" + name + ": File name too long"));
  rename("in/" + name, "in/y");
  EXPECT_EQ(missingFrom(take(), {"gone in/" + name + "/", std::string("touched in/y/")}), Texts{});
}

}  // namespace
}  // namespace standin::metadata
