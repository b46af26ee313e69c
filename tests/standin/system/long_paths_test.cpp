// Paths that are longer than the system takes in one call.
#include "standin/system/long_paths.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "standin/system/paths.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

TEST(LongPath, IsOpenedPieceByPiece) {
  const ScratchFolder scratch;
  const std::string folder = scratch.longFolder({"a.txt"});
  EXPECT_TRUE(standin::isFolder(folder));
  EXPECT_TRUE(standin::isFolder(folder + "///"));
  EXPECT_FALSE(standin::isFolder(folder + "/a.txt"));
  EXPECT_TRUE(standin::OpenFile(standin::openLongPath(folder + "/a.txt", O_RDONLY)));
  EXPECT_EQ(standin::openLongPath(folder + "/none", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(standin::openLongPath(std::string(2 * PATH_MAX, 'x'), O_RDONLY), -1);
  EXPECT_EQ(errno, ENAMETOOLONG);
}

// The long way answers what the system does, where that can.
TEST(LongPath, IsResolvedAsTheSystemDoes) {
  const ScratchFolder scratch;
  scratch.file("one/two/a.txt");
  scratch.link("one/up", "../one/./two");
  scratch.link("one/two/absolute", scratch.at("one/up"));
  scratch.link("one/file", "two/a.txt");
  scratch.link("circle", "circle");
  scratch.link("dangling", "nowhere");
  const fs::path before = fs::current_path();
  fs::current_path(scratch.at("one"));
  for (const std::string& path :
       {scratch.at("one/two"), scratch.at("one//two/"), scratch.at("one/up/absolute/a.txt"),
        scratch.at("one/up/.."), scratch.at("one/file"), scratch.at("one/file/"), scratch.at("one/file/x"),
        scratch.at("circle"), scratch.at("dangling"), scratch.at("none/.."), scratch.at("one/../../.."),
        std::string("/"), std::string("/.."), std::string("."), std::string("up"),
        std::string("./two/../two/a.txt"), std::string("..")}) {
    errno = 0;
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    const int error = real ? 0 : errno;
    errno = 0;
    const std::optional<std::string> found = standin::longRealPath(path);
    EXPECT_EQ(found.value_or("(none)"), real ? real.get() : "(none)") << path;
    if (!found) {
      EXPECT_EQ(errno, error) << path;
    }
  }
  fs::current_path(before);
}

TEST(LongPath, IsResolvedThroughLinks) {
  const ScratchFolder scratch;
  const std::string folder = scratch.longFolder({"a.txt"});
  EXPECT_EQ(standin::realPath(folder), folder);
  EXPECT_EQ(standin::realPath(folder + "/../" + std::string(200, 'd') + "/./a.txt"), folder + "/a.txt");
  EXPECT_EQ(standin::realPath(folder + "/none"), std::nullopt);
}

}  // namespace
