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

TEST_F(URLs, AppendingADirectoryAddsItsSlash) {
  const Owned<CFURLRef> url(makePath("/a", true));
  const Owned<CFURLRef> longer(CFURLCreateCopyAppendingPathComponent(nullptr, url.get(), CFSTR("b c"), true));
  EXPECT_EQ(textOf(CFURLGetString(longer.get())), "file:///a/b%20c/");
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
