#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/standin/coreservices/metadata/item_fixture.h"

namespace {

using Item = ItemTest;

TEST_F(Item, IsNullWhereNoFileIs) {
  EXPECT_FALSE(make(scratch.at("none")));
  EXPECT_FALSE(make(scratch.at("no/folder/here")));
  const auto text = makeString("http://localhost/tmp");
  const Owned url(CFURLCreateWithString(kCFAllocatorDefault, text.get(), nullptr));
  EXPECT_EQ(MDItemCreateWithURL(kCFAllocatorDefault, url.get()), nullptr);
}

TEST_F(Item, IsFoundByANameInTheOtherUnicodeForm) {
  const std::string composed = scratch.file("box/caf\xC3\xA9.txt");
  const auto item = make(scratch.at("box/cafe\xCC\x81.txt"));
  ASSERT_TRUE(item);
  EXPECT_EQ(text(item, kMDItemPath), composed);
  EXPECT_TRUE(CFEqual(item.get(), make(composed).get()));
  EXPECT_FALSE(make(scratch.at("box/cafe.txt")));
}

TEST_F(Item, KnowsNameAndPath) {
  const auto item = make(scratch.file("box/caf\xC3\xA9.txt"));
  EXPECT_EQ(text(item, kMDItemFSName), "caf\xC3\xA9.txt");
  EXPECT_EQ(text(item, kMDItemDisplayName), "caf\xC3\xA9.txt");
  EXPECT_EQ(text(item, kMDItemPath), scratch.at("box/caf\xC3\xA9.txt"));
}

TEST_F(Item, TellsNumbersAsNumbers) {
  const auto file = make(scratch.file("file", "12345"));
  EXPECT_EQ(number(file, kMDItemFSSize), 5);
  EXPECT_EQ(number(file, kMDItemFSOwnerUserID), ::getuid());
  EXPECT_EQ(number(file, kMDItemFSOwnerGroupID), ::getgid());
  EXPECT_FALSE(get(file, kMDItemFSNodeCount));
  scratch.file("box/.one");
  scratch.file("box/two");
  const auto folder = make(scratch.at("box"));
  EXPECT_EQ(number(folder, kMDItemFSNodeCount), 2);
  EXPECT_FALSE(get(folder, kMDItemFSSize));
}

TEST_F(Item, TellsSizesBeyondFourGigabytes) {
  const std::string path = scratch.file("sparse");
  ASSERT_EQ(::truncate(path.c_str(), off_t{5} << 30), 0);
  EXPECT_EQ(number(make(path), kMDItemFSSize), 5LL << 30);
}

TEST_F(Item, TellsDatesAsDates) {
  const std::string path = scratch.file("file");
  const timespec times[2] = {{0, 0}, {978307200 + 86400, 500000000}};  // a day and a half second into 2001
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const auto item = make(path);
  EXPECT_DOUBLE_EQ(date(item, kMDItemFSContentChangeDate), 86400.5);
  EXPECT_DOUBLE_EQ(date(item, kMDItemContentModificationDate), 86400.5);
  EXPECT_NE(date(item, kMDItemFSCreationDate), -1);
}

TEST_F(Item, TellsTheTimeAfter2038) {
  const std::string path = scratch.file("file");
  const timespec times[2] = {{0, 0}, {4102444800, 0}};  // 2100-01-01
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  EXPECT_DOUBLE_EQ(date(make(path), kMDItemFSContentChangeDate), 4102444800.0 - 978307200.0);
}

TEST_F(Item, TellsFlagsAsBooleans) {
  const auto plain = make(scratch.file("plain"));
  const auto hidden = make(scratch.file(".hidden"));
  EXPECT_EQ(get(plain, kMDItemFSInvisible).get(), kCFBooleanFalse);
  EXPECT_EQ(get(hidden, kMDItemFSInvisible).get(), kCFBooleanTrue);
  EXPECT_EQ(get(plain, kMDItemFSExists).get(), kCFBooleanTrue);
  EXPECT_EQ(get(plain, kMDItemFSIsReadable).get(), kCFBooleanTrue);
  EXPECT_EQ(get(plain, kMDItemFSIsWriteable).get(), kCFBooleanTrue);
}

TEST_F(Item, AnswersNullForAnAttributeItHasNot) {
  const auto item = make(scratch.file("file"));
  EXPECT_FALSE(get(item, kMDItemTempo));
  EXPECT_FALSE(get(item, makeString("no such key").get()));
  EXPECT_FALSE(get(item, makeString("\xC3\xA9").get()));
  EXPECT_FALSE(get(item, makeString(std::string(1000, 'k')).get()));
}

TEST_F(Item, KnowsOnlyItsNameAndPathOnceTheFileIsGone) {
  const std::string path = scratch.file("file");
  const auto item = make(path);
  ASSERT_EQ(::unlink(path.c_str()), 0);
  EXPECT_EQ(text(item, kMDItemFSName), "file");
  EXPECT_EQ(text(item, kMDItemPath), path);
  EXPECT_EQ(get(item, kMDItemFSExists).get(), kCFBooleanFalse);
  for (const CFStringRef key : {kMDItemFSSize, kMDItemFSCreationDate, kMDItemFSContentChangeDate,
                                kMDItemFSOwnerUserID, kMDItemFSIsReadable, kMDItemFSNodeCount}) {
    EXPECT_FALSE(get(item, key)) << textOf(key);
  }
}

TEST_F(Item, OfASymbolicLinkIsTheLinkItself) {
  scratch.file("target", "12345");
  const auto link = make(scratch.link("link", "target"));
  EXPECT_EQ(text(link, kMDItemFSName), "link");
  EXPECT_EQ(number(link, kMDItemFSSize), 6);
  EXPECT_TRUE(make(scratch.link("dangling", "/nonexistent")));
}

TEST_F(Item, IsTheSameByWhateverPathItWasNamed) {
  scratch.file("box/file");
  scratch.link("alias", "box");
  const auto direct = make(scratch.at("box/file"));
  const auto around = make(scratch.at("alias/../box/./file"));
  const auto through = make(scratch.at("alias/file"));
  EXPECT_TRUE(CFEqual(direct.get(), around.get()));
  EXPECT_TRUE(CFEqual(direct.get(), through.get()));
  EXPECT_EQ(text(through, kMDItemPath), scratch.at("box/file"));
  EXPECT_FALSE(CFEqual(direct.get(), make(scratch.at("box")).get()));
}

TEST_F(Item, OfTheRootFolderIsNamedBySlash) {
  const auto item = make("/");
  ASSERT_TRUE(item);
  EXPECT_EQ(text(item, kMDItemPath), "/");
  EXPECT_EQ(text(item, kMDItemFSName), "/");
  EXPECT_EQ(text(make("/tmp"), kMDItemPath), "/tmp");
}

TEST_F(Item, ShowsAByteThatIsNoUtf8AsAPercentSignAndTwoDigits) {
  const auto item = make(scratch.file("bad\xFF.txt", "123"));
  ASSERT_TRUE(item);
  EXPECT_EQ(text(item, kMDItemFSName), "bad%FF.txt");
  EXPECT_EQ(number(item, kMDItemFSSize), 3);
  EXPECT_EQ(standin::pathOfItem(item.get()), scratch.at("bad\xFF.txt"));
  EXPECT_DEATH(standin::pathOfItem(kCFBooleanTrue), "pathOfItem");
}

TEST_F(Item, AnswersNullWhenACallIsMadeToFail) {
  const auto item = make(scratch.file("file"));
  const auto url = makeURL(scratch.at("file"));
  standin::failCall("MDItemCreateWithURL", 1);
  EXPECT_EQ(MDItemCreateWithURL(kCFAllocatorDefault, url.get()), nullptr);
  standin::failCall("MDItemCopyAttribute", 1);
  EXPECT_EQ(MDItemCopyAttribute(item.get(), kMDItemFSName), nullptr);
}

using ItemDeathTest = Item;

TEST_F(ItemDeathTest, EndsTheProcessForANullOrAWrongItem) {
  const auto text = makeString("no item");
  EXPECT_DEATH(MDItemCopyAttribute(nullptr, kMDItemPath), "MDItemCopyAttribute: the item is null");
  const auto wrong = reinterpret_cast<MDItemRef>(const_cast<__CFString*>(text.get()));
  EXPECT_DEATH(MDItemCopyAttribute(wrong, kMDItemPath), "MDItemCopyAttribute: this is no item");
  EXPECT_DEATH(MDItemCreateWithURL(nullptr, nullptr), "MDItemCreateWithURL: the URL is null");
  const auto item = make(scratch.file("file"));
  EXPECT_DEATH(MDItemCopyAttribute(item.get(), nullptr), "MDItemCopyAttribute: the string is null");
}

TEST(Keys, AreStringsOfTheirOwnNames) {
#define KEY(name) EXPECT_EQ(textOf(name), #name);
#include "standin/coreservices/metadata/key_names.inc"
#undef KEY
}

}  // namespace
