#include <unistd.h>

#include "tests/standin/corefoundation/support.h"

namespace {

class URLs : public LedgerTest {};

CFURLRef makeURL(const char* text, CFURLRef base = nullptr) {
  const auto string = makeString(text);
  return CFURLCreateWithString(nullptr, string.get(), base);
}

CFURLRef makePath(const char* path, bool isDirectory) {
  const auto string = makeString(path);
  return CFURLCreateWithFileSystemPath(nullptr, string.get(), kCFURLPOSIXPathStyle, isDirectory);
}

std::string path(CFURLRef url) {
  UInt8 buffer[1024];
  return CFURLGetFileSystemRepresentation(url, true, buffer, sizeof buffer) ? reinterpret_cast<char*>(buffer)
                                                                            : "(none)";
}

TEST_F(URLs, ARelativePathIsOneBelowTheCurrentDirectory) {
  ASSERT_EQ(chdir("/tmp"), 0);
  const Owned<CFURLRef> url(makePath("a b/c", false));
  EXPECT_EQ(path(url.get()), "/tmp/a b/c");
  EXPECT_EQ(textOf(CFURLGetString(CFURLGetBaseURL(url.get()))), "file:///tmp/");
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(URLs, BytesOfAFileNameComeBackAsTheyWent) {
  for (const std::string name : {"/a/caf\xC3\xA9", "/a/cafe\xCC\x81", "/not utf-8 \xFF\xFE", "/100%;?#[]"}) {
    const auto* const bytes = reinterpret_cast<const UInt8*>(name.data());
    const Owned<CFURLRef> url(
        CFURLCreateFromFileSystemRepresentation(nullptr, bytes, static_cast<CFIndex>(name.size()), false));
    EXPECT_EQ(path(url.get()), name);
  }
}

TEST_F(URLs, APathThatIsNotUTF8HasNoStringAndOneWithAZeroByteNoFile) {
  const Owned<CFURLRef> latin(makeURL("file:///%E9"));
  EXPECT_EQ(CFURLCopyFileSystemPath(latin.get(), kCFURLPOSIXPathStyle), nullptr);
  EXPECT_EQ(path(latin.get()), "/\xE9");
  const Owned<CFURLRef> zero(makeURL("file:///a%00b"));
  EXPECT_EQ(path(zero.get()), "(none)");
}

TEST_F(URLs, TheRepresentationNeedsRoomForItsZeroByte) {
  const Owned<CFURLRef> url(makePath("/abc", false));
  UInt8 buffer[5];
  EXPECT_TRUE(CFURLGetFileSystemRepresentation(url.get(), false, buffer, 5));
  EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), false, buffer, 4));
  EXPECT_FALSE(CFURLGetFileSystemRepresentation(url.get(), false, buffer, 0));
}

TEST_F(URLs, DirectoriesEndInASlash) {
  const Owned<CFURLRef> directory(makePath("/a/b", true));
  const Owned<CFURLRef> file(makePath("/a/b", false));
  const Owned<CFURLRef> dots(makeURL("file:///a/.."));
  EXPECT_TRUE(CFURLHasDirectoryPath(directory.get()));
  EXPECT_FALSE(CFURLHasDirectoryPath(file.get()));
  EXPECT_TRUE(CFURLHasDirectoryPath(dots.get()));
  EXPECT_FALSE(CFEqual(directory.get(), file.get()));
  EXPECT_EQ(path(directory.get()), "/a/b");
}

TEST_F(URLs, APathThatEndsAsADirectoryNamesOneWhateverTheFlagSays) {
  for (const char* const name : {"/a/", "/a//", "/a/."}) {
    const Owned<CFURLRef> url(makePath(name, false));
    EXPECT_TRUE(CFURLHasDirectoryPath(url.get())) << name;
  }
  const Owned<CFURLRef> url(makePath("/a/", false));
  EXPECT_EQ(textOf(CFURLGetString(url.get())), "file:///a");
}

struct EscapeRow {
  const char* given;
  const char* string;
};

TEST_F(URLs, CharactersThatMayStandElsewhereOnlyAreEscaped) {
  const EscapeRow rows[] = {
      {"http://h/a[1]?b[2]#c[3]", "http://h/a%5B1%5D?b%5B2%5D#c%5B3%5D"},
      {"http://[::1]/[", "http://[::1]/%5B"},
      {"http://u[1]:p@[::1]:8]/", "http://u%5B1%5D:p@[::1]:8%5D/"},
      {"http://a[b]c/", "http://a%5Bb%5Dc/"},
      {"mailto:h#f", "mailto:h%23f"},
      {"mailto:[h]", "mailto:%5Bh%5D"},
  };
  for (const EscapeRow& row : rows) {
    const Owned<CFURLRef> url(makeURL(row.given));
    EXPECT_EQ(textOf(CFURLGetString(url.get())), row.string);
  }
}

TEST_F(URLs, ASemicolonInAHostStartsNoParameters) {
  const Owned<CFURLRef> url(makeURL("http://a;b/c"));
  EXPECT_EQ(path(url.get()), "/c");
}

TEST_F(URLs, GoingUpFromADotDropsItInLongerPathsOnly) {
  const EscapeRow rows[] = {{"file:///.", "file:///./../"},
                            {"file:////.", "file:////./../"},
                            {"file:///ab/.", "file:///ab/../"},
                            {"file:///a/b/./", "file:///a/b/../"}};
  for (const EscapeRow& row : rows) {
    const Owned<CFURLRef> url(makeURL(row.given));
    const Owned<CFURLRef> shorter(CFURLCreateCopyDeletingLastPathComponent(nullptr, url.get()));
    EXPECT_EQ(textOf(CFURLGetString(shorter.get())), row.string);
  }
}

TEST_F(URLs, AColonInAPathEndsASchemeOnceAnotherURLIsMadeOfIt) {
  const Owned<CFURLRef> base(makeURL("file:///base/"));
  const Owned<CFURLRef> url(CFURLCreateWithFileSystemPathRelativeToBase(
      nullptr, CFSTR(":/a"), kCFURLPOSIXPathStyle, false, base.get()));
  const Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(url.get()));
  EXPECT_EQ(textOf(CFURLGetString(absolute.get())), "file:///base/:/a");
  const Owned<CFURLRef> longer(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("b"), false));
  const Owned<CFURLRef> absoluteLonger(CFURLCopyAbsoluteURL(longer.get()));
  EXPECT_EQ(textOf(CFURLGetString(absoluteLonger.get())), "file:///a/b");
}

TEST_F(URLs, AppendingADirectoryAddsItsSlash) {
  const Owned<CFURLRef> url(makePath("/a", true));
  const Owned<CFURLRef> longer(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("b c"), true));
  EXPECT_EQ(textOf(CFURLGetString(longer.get())), "file:///a/b%20c/");
}

TEST_F(URLs, AppendingADirectoryNeverDoublesItsSlash) {
  const Owned<CFURLRef> url(makePath("/a", true));
  const Owned<CFURLRef> same(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR(""), true));
  EXPECT_EQ(textOf(CFURLGetString(same.get())), "file:///a/");
  const Owned<CFURLRef> longer(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("x/"), true));
  EXPECT_EQ(textOf(CFURLGetString(longer.get())), "file:///a/x/");
}

TEST_F(URLs, HoldTheirBaseAndAskItForTheScheme) {
  const Owned<CFURLRef> base(makeURL("http://host/dir/"));
  const Owned<CFURLRef> url(makeURL("page?q#f", base.get()));
  EXPECT_EQ(CFGetRetainCount(base.get()), 2);
  EXPECT_EQ(CFURLGetBaseURL(url.get()), base.get());
  const Owned<CFStringRef> scheme(CFURLCopyScheme(url.get()));
  EXPECT_EQ(textOf(scheme.get()), "http");
  const Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(url.get()));
  EXPECT_EQ(textOf(CFURLGetString(absolute.get())), "http://host/dir/page?q#f");
  EXPECT_EQ(CFURLGetBaseURL(absolute.get()), nullptr);
}

TEST_F(URLs, AnAbsoluteURLIsItsOwnAbsoluteForm) {
  const Owned<CFURLRef> url(makeURL("http://host/"));
  const Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(url.get()));
  EXPECT_EQ(absolute.get(), url.get());
}

TEST_F(URLs, AreEqualWhenStringAndBaseAre) {
  const Owned<CFURLRef> base(makeURL("http://host/"));
  const Owned<CFURLRef> sameBase(makeURL("http://host/"));
  const Owned<CFURLRef> a(makeURL("x", base.get()));
  const Owned<CFURLRef> b(makeURL("x", sameBase.get()));
  const Owned<CFURLRef> c(makeURL("x"));
  EXPECT_TRUE(CFEqual(a.get(), b.get()));
  EXPECT_EQ(CFHash(a.get()), CFHash(b.get()));
  EXPECT_FALSE(CFEqual(a.get(), c.get()));
}

TEST_F(URLs, OtherPathStylesAreNotKnown) {
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("Disk:a"), kCFURLHFSPathStyle, false), nullptr);
  const Owned<CFURLRef> url(makePath("/a", false));
  EXPECT_EQ(CFURLCopyFileSystemPath(url.get(), kCFURLHFSPathStyle), nullptr);
}

}  // namespace
