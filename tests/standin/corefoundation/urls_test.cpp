#include <unistd.h>

#include "tests/standin/corefoundation/support.h"

namespace {

class URLs : public LedgerTest {};

CFURLRef makeURL(const char* text, CFURLRef base = nullptr) {
  const Ref<CFStringRef> string(makeString(text));
  return CFURLCreateWithString(nullptr, string, base);
}

CFURLRef makePath(const char* path, bool isDirectory) {
  const Ref<CFStringRef> string(makeString(path));
  return CFURLCreateWithFileSystemPath(nullptr, string, kCFURLPOSIXPathStyle, isDirectory);
}

std::string path(CFURLRef url) {
  UInt8 buffer[1024];
  return CFURLGetFileSystemRepresentation(url, true, buffer, sizeof buffer) ? reinterpret_cast<char*>(buffer)
                                                                            : "(none)";
}

TEST_F(URLs, ARelativePathIsOneBelowTheCurrentDirectory) {
  ASSERT_EQ(chdir("/tmp"), 0);
  const Ref<CFURLRef> url(makePath("a b/c", false));
  EXPECT_EQ(path(url), "/tmp/a b/c");
  EXPECT_EQ(utf8(CFURLGetString(CFURLGetBaseURL(url))), "file:///tmp/");
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(URLs, BytesOfAFileNameComeBackAsTheyWent) {
  for (const std::string name : {"/a/caf\xC3\xA9", "/a/cafe\xCC\x81", "/not utf-8 \xFF\xFE", "/100%;?#[]"}) {
    const auto* const bytes = reinterpret_cast<const UInt8*>(name.data());
    const Ref<CFURLRef> url(
        CFURLCreateFromFileSystemRepresentation(nullptr, bytes, static_cast<CFIndex>(name.size()), false));
    EXPECT_EQ(path(url), name);
  }
}

TEST_F(URLs, APathThatIsNotUTF8HasNoStringAndOneWithAZeroByteNoFile) {
  const Ref<CFURLRef> latin(makeURL("file:///%E9"));
  EXPECT_EQ(CFURLCopyFileSystemPath(latin, kCFURLPOSIXPathStyle), nullptr);
  EXPECT_EQ(path(latin), "/\xE9");
  const Ref<CFURLRef> zero(makeURL("file:///a%00b"));
  EXPECT_EQ(path(zero), "(none)");
}

TEST_F(URLs, TheRepresentationNeedsRoomForItsZeroByte) {
  const Ref<CFURLRef> url(makePath("/abc", false));
  UInt8 buffer[5];
  EXPECT_TRUE(CFURLGetFileSystemRepresentation(url, false, buffer, 5));
  EXPECT_FALSE(CFURLGetFileSystemRepresentation(url, false, buffer, 4));
  EXPECT_FALSE(CFURLGetFileSystemRepresentation(url, false, buffer, 0));
}

TEST_F(URLs, DirectoriesEndInASlash) {
  const Ref<CFURLRef> directory(makePath("/a/b", true));
  const Ref<CFURLRef> file(makePath("/a/b", false));
  const Ref<CFURLRef> dots(makeURL("file:///a/.."));
  EXPECT_TRUE(CFURLHasDirectoryPath(directory));
  EXPECT_FALSE(CFURLHasDirectoryPath(file));
  EXPECT_TRUE(CFURLHasDirectoryPath(dots));
  EXPECT_FALSE(CFEqual(directory, file));
  EXPECT_EQ(path(directory), "/a/b");
}

TEST_F(URLs, AppendingADirectoryAddsItsSlash) {
  const Ref<CFURLRef> url(makePath("/a", true));
  const Ref<CFURLRef> longer(CFURLCreateCopyAppendingPathComponent(nullptr, url, CFSTR("b c"), true));
  EXPECT_EQ(utf8(CFURLGetString(longer)), "file:///a/b%20c/");
}

TEST_F(URLs, HoldTheirBaseAndAskItForTheScheme) {
  const Ref<CFURLRef> base(makeURL("http://host/dir/"));
  const Ref<CFURLRef> url(makeURL("page?q#f", base));
  EXPECT_EQ(CFGetRetainCount(base), 2);
  EXPECT_EQ(CFURLGetBaseURL(url), base.get());
  const Ref<CFStringRef> scheme(CFURLCopyScheme(url));
  EXPECT_EQ(utf8(scheme), "http");
  const Ref<CFURLRef> absolute(CFURLCopyAbsoluteURL(url));
  EXPECT_EQ(utf8(CFURLGetString(absolute)), "http://host/dir/page?q#f");
  EXPECT_EQ(CFURLGetBaseURL(absolute), nullptr);
}

TEST_F(URLs, AnAbsoluteURLIsItsOwnAbsoluteForm) {
  const Ref<CFURLRef> url(makeURL("http://host/"));
  const Ref<CFURLRef> absolute(CFURLCopyAbsoluteURL(url));
  EXPECT_EQ(absolute.get(), url.get());
}

TEST_F(URLs, AreEqualWhenStringAndBaseAre) {
  const Ref<CFURLRef> base(makeURL("http://host/"));
  const Ref<CFURLRef> sameBase(makeURL("http://host/"));
  const Ref<CFURLRef> a(makeURL("x", base));
  const Ref<CFURLRef> b(makeURL("x", sameBase));
  const Ref<CFURLRef> c(makeURL("x"));
  EXPECT_TRUE(CFEqual(a, b));
  EXPECT_EQ(CFHash(a), CFHash(b));
  EXPECT_FALSE(CFEqual(a, c));
}

TEST_F(URLs, OtherPathStylesAreNotKnown) {
  EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("Disk:a"), kCFURLHFSPathStyle, false), nullptr);
  const Ref<CFURLRef> url(makePath("/a", false));
  EXPECT_EQ(CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle), nullptr);
}

}  // namespace
