// Attributes of items that the file system knows, and those of extended attributes.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tests/standin/coreservices/metadata/item_fixture.h"

namespace {

using ItemAttributes = ItemTest;

std::vector<std::string> namesOf(const Owned<MDItemRef>& item) {
  const Owned<CFArrayRef> names(MDItemCopyAttributeNames(item.get()));
  std::vector<std::string> result;
  for (CFIndex i = 0; names && i < CFArrayGetCount(names.get()); ++i) {
    result.push_back(textOf(CFArrayGetValueAtIndex(names.get(), i)));
  }
  return result;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Names: all that are there, without the path and without the text.
TEST_F(ItemAttributes, NamesAreThoseOfAllAttributesThatAreThereButThePathAndTheText) {
  const auto item = make(scratch.file("file.txt", "some text"));
  const std::vector<std::string> names = namesOf(item);
  for (const char* const key : {"kMDItemFSName", "kMDItemDisplayName", "kMDItemFSSize", "kMDItemContentType",
                                "kMDItemContentTypeTree", "kMDItemKind", "kMDItemFSCreationDate",
                                "kMDItemAttributeChangeDate", "kMDItemFSLabel", "kMDItemFSInvisible"}) {
    EXPECT_TRUE(contains(names, key)) << key;
  }
  EXPECT_FALSE(contains(names, "kMDItemPath"));
  EXPECT_FALSE(contains(names, "kMDItemTextContent"));
  EXPECT_FALSE(contains(names, "kMDItemTitle"));
  EXPECT_FALSE(contains(names, "kMDItemFSNodeCount"));
  for (const std::string& name : names) EXPECT_TRUE(get(item, makeString(name).get())) << name;
}

TEST_F(ItemAttributes, NamesAreAllThatCanBeCopied) {
  const auto item = make(scratch.file("file.txt", "some text"));
  const std::vector<std::string> names = namesOf(item);
  const Owned<CFArrayRef> keys(MDSchemaCopyAllAttributes());
  for (CFIndex i = 0; i < CFArrayGetCount(keys.get()); ++i) {
    const auto key = static_cast<CFStringRef>(CFArrayGetValueAtIndex(keys.get(), i));
    if (textOf(key) == "kMDItemPath") continue;
    EXPECT_EQ(static_cast<bool>(get(item, key)), contains(names, textOf(key))) << textOf(key);
  }
}

// Attributes: only those that are there.
TEST_F(ItemAttributes, AreADictionaryOfThoseThatAreThere) {
  const auto item = make(scratch.file("file.txt", "12345"));
  const auto names = makeStrings({"kMDItemFSSize", "kMDItemTempo", "kMDItemPath", "no such key",
                                  "kMDItemContentTypeTree", "kMDItemTextContent", "kMDItemFSSize"});
  const Owned<CFDictionaryRef> some(MDItemCopyAttributes(item.get(), names.get()));
  ASSERT_TRUE(some);
  EXPECT_EQ(CFDictionaryGetCount(some.get()), 3);
  for (const CFStringRef key : {kMDItemFSSize, kMDItemPath, kMDItemContentTypeTree}) {
    const CFTypeRef value = CFDictionaryGetValue(some.get(), key);
    ASSERT_TRUE(value) << textOf(key);
    EXPECT_TRUE(CFEqual(value, get(item, key).get())) << textOf(key);
  }
  const Owned<CFDictionaryRef> none(MDItemCopyAttributes(item.get(), makeStrings({}).get()));
  ASSERT_TRUE(none);
  EXPECT_EQ(CFDictionaryGetCount(none.get()), 0);
}

// The text of a file can be searched and is never told.
TEST_F(ItemAttributes, NeverTellTheText) {
  EXPECT_FALSE(get(make(scratch.file("file.txt", "some text")), kMDItemTextContent));
}

TEST_F(ItemAttributes, HaveTheTypeThatTheSchemaTells) {
  scratch.file("box/file");
  for (const auto& item : {make(scratch.file("file.txt", "text")), make(scratch.at("box"))}) {
    for (const std::string& name : namesOf(item)) {
      const auto key = makeString(name);
      const Owned<CFDictionaryRef> about(MDSchemaCopyMetaAttributesForAttribute(key.get()));
      int type = 0;
      CFNumberGetValue(static_cast<CFNumberRef>(CFDictionaryGetValue(about.get(), kMDAttributeType)),
                       kCFNumberIntType, &type);
      EXPECT_EQ(CFGetTypeID(get(item, key.get()).get()), static_cast<CFTypeID>(type)) << name;
    }
  }
}

TEST_F(ItemAttributes, SayWhatLinuxFilesNeverAre) {
  const auto item = make(scratch.file("file.txt"));
  EXPECT_EQ(get(item, kMDItemFSIsExtensionHidden).get(), kCFBooleanFalse);
  EXPECT_EQ(get(item, kMDItemFSHasCustomIcon).get(), kCFBooleanFalse);
  EXPECT_EQ(get(item, kMDItemFSIsStationery).get(), kCFBooleanFalse);
  EXPECT_EQ(number(item, kMDItemFSLabel), 0);
}

TEST_F(ItemAttributes, DateTheChangeOfAttributesByTheSystemsOwnRecord) {
  const std::string path = scratch.file("file");
  const timespec times[2] = {{0, UTIME_OMIT}, {1000000000, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  struct stat info;
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  const double changed = static_cast<double>(info.st_ctim.tv_sec - 978307200) + info.st_ctim.tv_nsec / 1e9;
  EXPECT_DOUBLE_EQ(date(make(path), kMDItemAttributeChangeDate), changed);
}

TEST_F(ItemAttributes, DateTheAdditionByTheFilesBirth) {
  const std::string path = scratch.file("file");
  struct statx info;
  ASSERT_EQ(::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &info), 0);
  const auto item = make(path);
  if (info.stx_mask & STATX_BTIME) {
    EXPECT_DOUBLE_EQ(date(item, kMDItemDateAdded), date(item, kMDItemFSCreationDate));
  } else {
    EXPECT_FALSE(get(item, kMDItemDateAdded));
  }
}

TEST_F(ItemAttributes, DateTheLastUseWhereTheFileWasReadAfterItWasWritten) {
  const std::string path = scratch.file("file");
  const timespec read[2] = {{978307200 + 200, 0}, {978307200 + 100, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), read, 0), 0);
  EXPECT_DOUBLE_EQ(date(make(path), kMDItemLastUsedDate), 200);
  const timespec unread[2] = {{978307200 + 100, 0}, {978307200 + 100, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), unread, 0), 0);
  EXPECT_FALSE(get(make(path), kMDItemLastUsedDate));
}

class ExtendedAttributes : public ItemTest {
 protected:
  void SetUp() override {
    path = scratch.file("file.txt", "text");
    if (::setxattr(path.c_str(), "user.test", "1", 1, 0) != 0 && errno == ENOTSUP) {
      GTEST_SKIP() << "the file system of " << path << " keeps no extended attributes";
    }
  }
  void set(const char* name, const std::string& value) {
    ASSERT_EQ(::setxattr(path.c_str(), name, value.data(), value.size(), 0), 0) << name;
  }

  std::string path;
};

TEST_F(ExtendedAttributes, TellWhereAFileIsFrom) {
  EXPECT_FALSE(get(make(path), kMDItemWhereFroms));
  set("user.xdg.origin.url", "https://example.org/caf\xC3\xA9.txt");
  EXPECT_EQ(texts(make(path), kMDItemWhereFroms),
            std::vector<std::string>{"https://example.org/caf\xC3\xA9.txt"});
  set("user.xdg.referrer.url", "https://example.org/");
  EXPECT_EQ(texts(make(path), kMDItemWhereFroms),
            (std::vector<std::string>{"https://example.org/caf\xC3\xA9.txt", "https://example.org/"}));
}

TEST_F(ExtendedAttributes, TellTheCommentOfAFileOrAFolder) {
  EXPECT_FALSE(get(make(path), kMDItemFinderComment));
  set("user.xdg.comment", "a comment");
  EXPECT_EQ(text(make(path), kMDItemFinderComment), "a comment");
  set("user.xdg.comment", std::string(2000, 'c'));
  EXPECT_EQ(text(make(path), kMDItemFinderComment), std::string(2000, 'c'));
  path = scratch.folder("box");
  set("user.xdg.comment", "of a folder");
  EXPECT_EQ(text(make(path), kMDItemFinderComment), "of a folder");
}

TEST_F(ExtendedAttributes, TellTheTypeBeforeTheName) {
  set("user.mime_type", "Text/HTML; charset=utf-8");
  EXPECT_EQ(text(make(path), kMDItemContentType), "public.html");
  set("user.mime_type", "nobody/knows");
  EXPECT_EQ(text(make(path), kMDItemContentType), "public.plain-text");
}

TEST_F(ExtendedAttributes, AreSearched) {
  set("user.xdg.comment", "remember me");
  const auto found = makeQuery("kMDItemFinderComment == \"remember*\"");
  ASSERT_TRUE(MDQueryExecute(found.get(), kMDQuerySynchronous));
  ASSERT_EQ(MDQueryGetResultCount(found.get()), 1);
}

// What the name promises has no text; what the attribute tells has.
TEST_F(ExtendedAttributes, TellTextWhereTheNameTellsNone) {
  path = scratch.file("picture.jpg", "a harbour");
  for (const CFIndex count : {0, 1}) {
    if (count) set("user.mime_type", "text/plain");
    const auto found = makeQuery("kMDItemTextContent == \"harbour\"");
    ASSERT_TRUE(MDQueryExecute(found.get(), kMDQuerySynchronous));
    EXPECT_EQ(MDQueryGetResultCount(found.get()), count);
  }
}

TEST_F(ItemAttributes, AreNullWhenACallIsMadeToFail) {
  const auto item = make(scratch.file("file"));
  standin::failCall("MDItemCopyAttributes", 1);
  EXPECT_EQ(MDItemCopyAttributes(item.get(), makeStrings({"kMDItemFSName"}).get()), nullptr);
  standin::failCall("MDItemCopyAttributeNames", 1);
  EXPECT_EQ(MDItemCopyAttributeNames(item.get()), nullptr);
}

using ItemAttributesDeathTest = ItemAttributes;

TEST_F(ItemAttributesDeathTest, EndTheProcessWhenWronglyAskedFor) {
  const auto item = make(scratch.file("file"));
  const auto names = makeStrings({"kMDItemFSName"});
  EXPECT_DEATH(MDItemCopyAttributes(nullptr, names.get()), "MDItemCopyAttributes: the item is null");
  EXPECT_DEATH(MDItemCopyAttributes(item.get(), nullptr), "MDItemCopyAttributes: the array is null");
  EXPECT_DEATH(MDItemCopyAttributeNames(nullptr), "MDItemCopyAttributeNames: the item is null");
  const void* const wrong[] = {kCFNull};
  const Owned numbers(
      CFArrayCreate(kCFAllocatorDefault, const_cast<const void**>(wrong), 1, &kCFTypeArrayCallBacks));
  EXPECT_DEATH(MDItemCopyAttributes(item.get(), numbers.get()), "MDItemCopyAttributes: this is no string");
}

}  // namespace
