// When what is in files is read: for what only that can tell, and not before.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "tests/standin/coreservices/media/sample_files.h"
#include "tests/standin/coreservices/metadata/item_fixture.h"

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// Reads attributes in a process of its own, in which a program of the test's own is found in PATH.
class LazyReading : public ItemTest {
 protected:
  void SetUp() override {
    ItemTest::SetUp();
    const std::string perl =
        scratch.file("bin/perl", "#!/bin/sh\necho start >> '" + log() + "'\nexec /usr/bin/perl \"$@\"\n");
    ASSERT_EQ(::chmod(perl.c_str(), 0755), 0);
    photo = picture(1);
    notes = scratch.file("notes.txt", "text");
  }

  std::string log() const { return scratch.at("log"); }
  std::string picture(int number) {
    return scratch.file("photo " + std::to_string(number) + ".jpg", sample::jpeg());
  }

  // How often the program was started while `work` was done.
  int startsDuring(const std::function<void()>& work) {
    std::filesystem::remove(log());
    const pid_t child = ::fork();
    if (child == 0) {
      ::setenv("PATH", (scratch.at("bin") + ':' + std::getenv("PATH")).c_str(), 1);
      work();
      ::_exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return static_cast<int>(contentOf(log()).size() / std::strlen("start\n"));
  }

  static void search(const std::string& folder, const char* query, CFIndex results) {
    const auto found = makeQuery(query);
    standin::setIndexedFolders({folder});
    ASSERT_TRUE(MDQueryExecute(found.get(), kMDQuerySynchronous));
    EXPECT_EQ(MDQueryGetResultCount(found.get()), results) << query;
  }

  std::string photo, notes;
};

TEST_F(LazyReading, StartsNothingForWhatTheFileSystemKnows) {
  EXPECT_EQ(startsDuring([&] {
              const auto item = make(photo);
              for (const CFStringRef key :
                   {kMDItemFSName, kMDItemDisplayName, kMDItemPath, kMDItemFSSize, kMDItemFSCreationDate,
                    kMDItemFSContentChangeDate, kMDItemContentModificationDate, kMDItemAttributeChangeDate,
                    kMDItemFSOwnerUserID, kMDItemFSInvisible, kMDItemFSLabel, kMDItemContentType,
                    kMDItemContentTypeTree, kMDItemKind}) {
                EXPECT_TRUE(get(item, key)) << textOf(key);
              }
              EXPECT_FALSE(get(item, kMDItemWhereFroms));
              EXPECT_FALSE(get(item, kMDItemDueDate));
            }),
            0);
}

TEST_F(LazyReading, StartsNothingForContentThatSaysNothingAboutItself) {
  EXPECT_EQ(startsDuring([&] {
              const auto item = make(notes);
              EXPECT_FALSE(get(item, kMDItemTitle));
              EXPECT_TRUE(get(item, kMDItemContentCreationDate));
              const Owned<CFArrayRef> names(MDItemCopyAttributeNames(item.get()));
              EXPECT_TRUE(names);
            }),
            0);
}

TEST_F(LazyReading, StartsOneProcessForAFewFiles) {
  EXPECT_EQ(startsDuring([&] {
              EXPECT_EQ(number(make(photo), kMDItemPixelWidth), 32);
              EXPECT_EQ(number(make(picture(2)), kMDItemPixelHeight), 16);
              const Owned<CFArrayRef> names(MDItemCopyAttributeNames(make(picture(3)).get()));
              EXPECT_TRUE(names);
            }),
            1);
}

TEST_F(LazyReading, SearchesByNameSizeAndTypeWithoutStartingAnything) {
  const std::string folder = scratch.folder("box");
  scratch.file("box/photo.jpg", sample::jpeg());
  scratch.file("box/notes.txt", "text");
  EXPECT_EQ(startsDuring([&] {
              search(folder, "kMDItemFSName == \"*.jpg\" && kMDItemFSSize > 10", 1);
              search(folder, "kMDItemContentTypeTree == \"public.image\"", 1);
            }),
            0);
  EXPECT_EQ(startsDuring([&] { search(folder, "kMDItemPixelWidth == 32", 1); }), 1);
  EXPECT_EQ(startsDuring([&] { search(folder, "kMDItemFSName == \"*.txt\" && kMDItemPixelWidth == 32", 0); }),
            0);
}

TEST_F(LazyReading, ComplainsOnStandardErrorOnce) {
  const std::string message = scratch.at("message");
  const std::string other = picture(2);
  std::filesystem::remove(scratch.at("bin/perl"));
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("PATH", scratch.at("bin").c_str(), 1);
    std::freopen(message.c_str(), "w", stderr);
    for (const std::string& path : {photo, other}) {
      EXPECT_FALSE(get(make(path), kMDItemPixelWidth));
      EXPECT_TRUE(get(make(path), kMDItemFSSize));
    }
    std::fflush(stderr);
    ::_exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(message),
            "standin: metadata: exiftool isn't there: install Debian's libimage-exiftool-perl, or set PATH. "
            "Attributes of media and documents may be missing.\n");
}

}  // namespace
