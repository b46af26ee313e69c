// What file systems tell of files that needs more than 32 bits: dates long ago and far away, and inodes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr char kMemory[] = "/dev/shm";  // a file system that keeps any date

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

struct Date {
  int year;
  int64_t seconds;  // since 1970, of the first of May
};

bool setDate(const std::string& path, int64_t seconds) {
  const timespec time{static_cast<time_t>(seconds), 0};
  const timespec times[] = {time, time};
  struct stat info;
  return ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0 &&
         ::lstat(path.c_str(), &info) == 0 && info.st_mtime == seconds;
}

class Dated : public testing::TestWithParam<Date> {
 protected:
  void SetUp() override {
    if (::access(kMemory, W_OK) != 0) GTEST_SKIP() << "no file system that keeps any date at " << kMemory;
    scratch_.emplace(kMemory);
    for (const char* const folder : {"files", "cache", "temporary"}) scratch_->folder(folder);
    scratch_->file("files/deep/a.txt", "12345");
    scratch_->file("files/photo.jpg", contentOf(exampleLibrary() + "/Photos/Harbour at dawn.jpg"));
    scratch_->file("plug-in.dylib", contentOf(files.dylib));
    scratch_->file("plug-in.so", contentOf(files.elf));
    if (!dateAll()) GTEST_SKIP() << kMemory << " doesn't keep the year " << GetParam().year;
  }

  // False where the file system has changed one of the dates.
  bool dateAll() const {
    bool all = setDate(scratch_->path(), GetParam().seconds);
    for (const auto& entry : fs::recursive_directory_iterator(scratch_->path()))
      all = setDate(entry.path(), GetParam().seconds) && all;
    return all;
  }

  Result runDated(std::vector<std::string> arguments) const {
    EXPECT_TRUE(dateAll());
    return run(
        {.arguments = std::move(arguments),
         .environment = {"XDG_CACHE_HOME=" + scratch_->at("cache"), "TMPDIR=" + scratch_->at("temporary")}});
  }

  std::optional<ScratchFolder> scratch_;
};

TEST_P(Dated, FilesAreFoundAndTheirAttributesToldByEitherPlugin) {
  const std::string day = std::to_string(GetParam().year) + "-05-01";
  for (const char* const plugin : {"plug-in.dylib", "plug-in.so"}) {
    SCOPED_TRACE(plugin);
    const Result found =
        runDated({"find", "kMDItemFSContentChangeDate == $time.iso(" + day + ")", "--in",
                  scratch_->at("files"), "--show", "kMDItemFSName", "--plugin", scratch_->at(plugin)});
    EXPECT_EQ(lines(found.output), (Texts{"deep", "a.txt", "photo.jpg"})) << found;
    const Result attributes =
        runDated({"attrs", scratch_->at("files/deep"), scratch_->at("files/deep/a.txt"),
                  "--keys=kMDItemFSContentChangeDate", "--plugin", scratch_->at(plugin)});
    const std::string date = "kMDItemFSContentChangeDate = " + day + "T00:00:00Z\n";
    EXPECT_EQ(attributes.output, scratch_->at("files/deep") + ":\n" + date + '\n' +
                                     scratch_->at("files/deep/a.txt") + ":\n" + date)
        << attributes;
  }
  const Result live =
      runDated({"find", "kMDItemFSSize == 5", "--in", scratch_->at("files"), "--live", "--for", "0"});
  EXPECT_EQ(live.output, "+ " + scratch_->at("files/deep/a.txt") + '\n') << live;
}

TEST_P(Dated, StoreIsUsed) {
  const std::vector<std::string> findPhoto = {
      "find", "kMDItemPixelWidth > 0", "--in", scratch_->at("files"), "--show", "kMDItemFSName"};
  for (const std::string hits : {"0 of 1", "0 of 2"}) {  // dating a file changes it
    const Result found = runDated(findPhoto);
    EXPECT_EQ(found.output, "photo.jpg\n") << found;
    EXPECT_EQ(lines(found.errors).size(), 1u) << found;  // no complaint of the store
    const Result store = runDated({"store"});
    EXPECT_NE(store.output.find("hits   " + hits), std::string::npos) << store;
  }
  EXPECT_EQ(runDated({"store", "--check"}).output, "every entry is as it was written\n");
}

INSTANTIATE_TEST_SUITE_P(Years, Dated,
                         testing::Values(Date{1800, -5354294400}, Date{2039, 2187820800},
                                         Date{2500, 16735593600}),
                         [](const auto& info) { return std::to_string(info.param.year); });

// An overlay of two file systems marks its inodes in their highest bits. Only the administrator may mount it,
// which here goes away with the program.
TEST(LargeInodes, AreNoDifference) {
  if (::geteuid() != 0 || ::access(kMemory, W_OK) != 0)
    GTEST_SKIP() << "mounting takes the administrator, and a file system at " << kMemory;
  const ScratchFolder lower;
  const ScratchFolder upper(kMemory);
  for (const char* const folder : {"upper", "work", "merged", "cache"}) upper.folder(folder);
  lower.file("deep/a.txt", "12345");
  lower.file("deep/photo.jpg", contentOf(exampleLibrary() + "/Photos/Harbour at dawn.jpg"));
  const std::string merged = upper.at("merged");
  const std::string mount = "mount -t overlay overlay -o xino=on,lowerdir=" + lower.path() +
                            ",upperdir=" + upper.at("upper") + ",workdir=" + upper.at("work") + ' ' + merged;
  const auto runThere = [&](const std::string& script) {
    return run({.arguments = {"-m", "sh", "-c", mount + " 2>&1 || exit 99; cd " + merged + "; " + script,
                              files.program},
                .program = "/usr/bin/unshare",
                .environment = {"XDG_CACHE_HOME=" + upper.at("cache")}});
  };
  const Result inode = runThere("stat -c %i deep/photo.jpg");
  if (inode.status != 0) GTEST_SKIP() << "no overlay can be mounted: " << inode;
  if (std::stoull(inode.output) >> 32 == 0) GTEST_SKIP() << "the overlay has small inodes: " << inode.output;
  const std::string find = "\"$0\" find 'kMDItemPixelWidth > 0' --show kMDItemPath; ";
  const std::string path = merged + "/deep/photo.jpg\n";
  const Result found = runThere(find + find + "\"$0\" store; \"$0\" attrs deep/a.txt --keys=kMDItemFSSize");
  EXPECT_TRUE(startsWith(found.output, path + path)) << found;
  EXPECT_NE(found.output.find("hits   1 of 2"), std::string::npos) << found;
  EXPECT_TRUE(found.output.ends_with("kMDItemFSSize = 5\n")) << found;
}

}  // namespace
