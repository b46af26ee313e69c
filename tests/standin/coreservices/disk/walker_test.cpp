#include "standin/coreservices/disk/walker.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <random>

#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;

class Listing : public WalkVisitor {
 public:
  void entered(const std::string&, size_t) override { ++depth; }
  void left() override { --depth; }
  void found(int folder, const std::string& path, const char* name) override {
    struct stat info;
    if (::fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) ++unreachable;
    paths.push_back(path + '/' + name);
    if (onFound) onFound(name);
  }

  std::vector<std::string> paths;
  int depth = 0;
  int unreachable = 0;
  std::function<void(const std::string&)> onFound;
};

WalkReport walk(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor) {
  Walk walk(root, excluded, visitor);
  while (walk.step()) {
  }
  return walk.report();
}

TEST(Walk, ListsEntriesByTheirBytesAndAFoldersContentRightAfterIt) {
  const ScratchFolder scratch;
  for (const char* name : {"b.txt", "a/z", "a/B", "Z", "a.txt", "\xC3\xA9"}) scratch.file(name);
  Listing listing;
  const WalkReport report = walk(scratch.path(), {}, listing);
  EXPECT_EQ(scratch.within(listing.paths), (Texts{"Z", "a", "a/B", "a/z", "a.txt", "b.txt", "\xC3\xA9"}));
  EXPECT_EQ(report.folders, 2u);
  EXPECT_EQ(report.unreadableFolders, 0u);
  EXPECT_EQ(listing.depth, 0);
}

// The same beginnings, names that others begin with, and differences before, in and after any eight bytes.
TEST(Walk, ListsNamesThatBeginAlikeByTheirBytes) {
  for (const std::string beginning : {"", "a", "a file named ", "\xC3\xA9\xC3\xA9\xC3\xA9"}) {
    const ScratchFolder scratch;
    Texts names;
    for (const char* const end :
         {"\x01", "0", "00", "000000000", "0000000a", "0000000a\xFF", "00000010", "1", "Z", "a", "a b",
          "aaaaaaaa", "aaaaaaaaa", "aaaaaaaab", "\x7F", "\x80", "\xFF"}) {
      names.push_back(beginning + end);
    }
    std::ranges::shuffle(names, std::minstd_rand(1));
    for (const std::string& name : names) scratch.file(name);
    if (!beginning.empty()) names.push_back(scratch.within({scratch.file(beginning)}).front());
    std::ranges::sort(names);
    Listing listing;
    walk(scratch.path(), {}, listing);
    EXPECT_EQ(scratch.within(listing.paths), names) << beginning;
  }
}

TEST(Walk, ListsHiddenFilesAndNamesOfAnyBytes) {
  const ScratchFolder scratch;
  for (const char* name : {".hidden", "...", "a\xFF", "new\nline", " "}) scratch.file(name);
  Listing listing;
  walk(scratch.path(), {}, listing);
  EXPECT_EQ(scratch.within(listing.paths), (Texts{" ", "...", ".hidden", "a\xFF", "new\nline"}));
}

TEST(Walk, ListsSymbolicLinksWithoutFollowingThem) {
  const ScratchFolder scratch;
  scratch.file("folder/file");
  scratch.link("folder/up", scratch.path());
  scratch.link("loop", "loop");
  scratch.link("nowhere", "/nonexistent");
  scratch.link("to-folder", "folder");
  Listing listing;
  const WalkReport report = walk(scratch.path(), {}, listing);
  EXPECT_EQ(scratch.within(listing.paths),
            (Texts{"folder", "folder/file", "folder/up", "loop", "nowhere", "to-folder"}));
  EXPECT_EQ(report.unreadableFolders, 0u);
}

TEST(Walk, SkipsAndCountsFoldersItMayNotRead) {
  const ScratchFolder scratch;
  const OrdinaryUser user;
  scratch.file("closed/secret");
  scratch.file("open/file");
  ::chmod(scratch.at("closed").c_str(), 0);
  Listing listing;
  const WalkReport report = walk(scratch.path(), {}, listing);
  ::chmod(scratch.at("closed").c_str(), 0700);
  EXPECT_EQ(scratch.within(listing.paths), (Texts{"closed", "open", "open/file"}));
  EXPECT_EQ(report.unreadableFolders, 1u);
}

TEST(Walk, LeavesOutWhatIsInExcludedFolders) {
  const ScratchFolder scratch;
  scratch.file("left-out/file");
  scratch.file("kept/file");
  struct stat info;
  ASSERT_EQ(::stat(scratch.at("left-out").c_str(), &info), 0);
  Listing listing;
  walk(scratch.path(), {{info.st_dev, info.st_ino}}, listing);
  EXPECT_EQ(scratch.within(listing.paths), (Texts{"kept", "kept/file", "left-out"}));
  Listing inside;
  walk(scratch.at("left-out"), {{info.st_dev, info.st_ino}}, inside);
  EXPECT_EQ(inside.paths.size(), 1u);
}

TEST(Walk, GoesStepByStep) {
  const ScratchFolder scratch;
  for (const char* name : {"a/1", "a/2", "b/3"}) scratch.file(name);
  Listing listing;
  const std::vector<FileId> excluded;
  Walk walk(scratch.path(), excluded, listing);
  size_t seen = 0;
  while (walk.step()) {
    EXPECT_LE(listing.paths.size(), seen + 1);
    seen = listing.paths.size();
  }
  EXPECT_EQ(listing.paths.size(), 5u);
  EXPECT_FALSE(walk.step());
}

TEST(Walk, MayBeLeftOff) {
  const ScratchFolder scratch;
  for (const char* name : {"a/1", "a/2", "b/3"}) scratch.file(name);
  Listing listing;
  const std::vector<FileId> excluded;
  Walk walk(scratch.path(), excluded, listing);
  while (listing.paths.size() < 2) ASSERT_TRUE(walk.step());
  EXPECT_EQ(scratch.within(listing.paths), (Texts{"a", "a/1"}));
}

TEST(Walk, GoesOnWhenFilesAndFoldersVanishMeanwhile) {
  const ScratchFolder scratch;
  for (const char* name : {"a", "b/inside", "c"}) scratch.file(name);
  Listing listing;
  listing.onFound = [&](const std::string& name) {
    if (name == "a") fs::remove_all(scratch.at("b"));
  };
  const WalkReport report = walk(scratch.path(), {}, listing);
  EXPECT_EQ(scratch.within(listing.paths), (Texts{"a", "b", "c"}));
  EXPECT_EQ(report.unreadableFolders, 0u);
}

TEST(Walk, AnswersForAFolderThatIsNotThere) {
  Listing listing;
  const WalkReport report = walk("/nonexistent-folder", {}, listing);
  EXPECT_TRUE(listing.paths.empty());
  EXPECT_EQ(report.folders, 0u);
}

// Folders so deep that no path of one system call leads there, and more of them than may be open at once.
TEST(Walk, ReachesWhatLiesDeeperThanTheLongestPath) {
  constexpr int kDepth = 300;
  const ScratchFolder scratch;
  const std::string name(20, 'd');
  int folder = ::open(scratch.path().c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < kDepth; ++i) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(next, 0);
    ASSERT_GE(::close(::openat(folder, "zz-after", O_CREAT | O_WRONLY, 0600)), 0);
    ::close(folder);
    folder = next;
  }
  ::close(folder);
  rlimit usual;
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  const rlimit few{128, usual.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  Listing listing;
  const WalkReport report = walk(scratch.path(), {}, listing);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
  EXPECT_EQ(report.folders, kDepth + 1u);
  EXPECT_EQ(report.unreadableFolders, 0u);
  EXPECT_EQ(listing.paths.size(), 2u * kDepth);
  EXPECT_EQ(listing.unreachable, 0);
  EXPECT_EQ(listing.depth, 0);
  EXPECT_EQ(scratch.within(listing.paths).back(), "zz-after");
}

TEST(Walk, LeavesNoFileOpen) {
  const auto openFiles = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  const ScratchFolder scratch;
  for (const char* name : {"a/b/c/1", "a/b/2", "d/3"}) scratch.file(name);
  const auto before = openFiles();
  Listing listing;
  walk(scratch.path(), {}, listing);
  {
    const std::vector<FileId> excluded;
    Walk leftOff(scratch.path(), excluded, listing);
    leftOff.step();
    leftOff.step();
  }
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace standin::metadata
