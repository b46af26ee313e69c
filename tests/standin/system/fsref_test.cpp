#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

namespace {

class FileReference : public testing::Test {
 protected:
  ~FileReference() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  static std::string pathOf(const Owned<CFURLRef>& url) {
    UInt8 path[4096] = "";
    if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, path, sizeof path)) return "(none)";
    return reinterpret_cast<const char*>(path);
  }
};

TEST_F(FileReference, NamesAFileThatIsThere) {
  FSRef ref;
  ASSERT_TRUE(CFURLGetFSRef(makeURL("/tmp").get(), &ref));
  const Owned url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
  EXPECT_EQ(pathOf(url), "/tmp");
  EXPECT_TRUE(CFURLHasDirectoryPath(url.get()));
}

TEST_F(FileReference, OfTheSameFileHasTheSameBytes) {
  FSRef first, second, third;
  std::memset(&first, 1, sizeof first);
  std::memset(&second, 2, sizeof second);
  ASSERT_TRUE(CFURLGetFSRef(makeURL("/tmp").get(), &first));
  ASSERT_TRUE(CFURLGetFSRef(makeURL("/tmp/").get(), &second));
  ASSERT_TRUE(CFURLGetFSRef(makeURL("/").get(), &third));
  EXPECT_EQ(std::memcmp(&first, &second, sizeof first), 0);
  EXPECT_NE(std::memcmp(&first, &third, sizeof first), 0);
}

TEST_F(FileReference, IsNotMadeWhereNoFileIs) {
  FSRef ref;
  EXPECT_FALSE(CFURLGetFSRef(makeURL("/nonexistent").get(), &ref));
  const auto text = makeString("http://localhost/tmp");
  const Owned url(CFURLCreateWithString(kCFAllocatorDefault, text.get(), nullptr));
  EXPECT_FALSE(CFURLGetFSRef(url.get(), &ref));
}

TEST_F(FileReference, NamesAFileHoweverLongItsPathIs) {
  const ScratchFolder scratch;
  const std::string folder = scratch.longFolder({"a.txt"});
  for (const std::string& path : {folder, folder + "/a.txt"}) {
    FSRef ref, other;
    ASSERT_TRUE(CFURLGetFSRef(makeURL(path).get(), &ref));
    const Owned url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
    std::string found(2 * PATH_MAX, '\0');
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(found.data()),
                                                 static_cast<CFIndex>(found.size())));
    EXPECT_EQ(found.c_str(), path);
    EXPECT_EQ(CFURLHasDirectoryPath(url.get()), path == folder);
    ASSERT_TRUE(CFURLGetFSRef(makeURL(path + "/.").get(), &other) == (path == folder));
    EXPECT_FALSE(CFURLGetFSRef(makeURL(path + "x").get(), &other));
  }
}

TEST_F(FileReference, MakesNoURLOnceTheFileIsGone) {
  const std::string path = std::filesystem::temp_directory_path() / ("fsref-" + std::to_string(::getpid()));
  std::filesystem::create_directory(path);
  FSRef ref;
  ASSERT_TRUE(CFURLGetFSRef(makeURL(path).get(), &ref));
  std::filesystem::remove(path);
  EXPECT_EQ(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref), nullptr);
}

TEST_F(FileReference, AnswersNullOrFalseWhenACallIsMadeToFail) {
  FSRef ref;
  ASSERT_TRUE(CFURLGetFSRef(makeURL("/tmp").get(), &ref));
  standin::failCall("CFURLCreateFromFSRef", 1);
  EXPECT_EQ(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref), nullptr);
  const auto url = makeURL("/tmp");
  standin::failCall("CFURLGetFSRef", 1);
  EXPECT_FALSE(CFURLGetFSRef(url.get(), &ref));
  standin::failCall("FSFindFolder", 1);
  EXPECT_EQ(FSFindFolder(kOnAppropriateDisk, kFrameworksFolderType, true, &ref), fnfErr);
}

TEST_F(FileReference, IsFoundForTheFrameworksFolderOnly) {
  FSRef ref;
  ASSERT_EQ(FSFindFolder(kOnAppropriateDisk, kFrameworksFolderType, true, &ref), noErr);
  const std::string path = pathOf(Owned(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref)));
  EXPECT_EQ(std::filesystem::path(path).filename(), "Frameworks");
  EXPECT_EQ(FSFindFolder(kOnAppropriateDisk, 0x64657363, true, &ref), fnfErr);  // 'desc'
}

using FileReferenceDeathTest = FileReference;

TEST_F(FileReferenceDeathTest, EndsTheProcessForBytesThatNobodyFilled) {
  FSRef ref;
  std::memset(&ref, 0, sizeof ref);
  EXPECT_DEATH(CFURLCreateFromFSRef(nullptr, &ref), "CFURLCreateFromFSRef: no call");
  EXPECT_DEATH(CFURLCreateFromFSRef(nullptr, nullptr), "FSRef is null");
  EXPECT_DEATH(CFURLGetFSRef(nullptr, &ref), "CFURLGetFSRef: the URL is null");
}

}  // namespace
