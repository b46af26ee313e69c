#include <CoreFoundation/CoreFoundation.h>

#include "tests/standin/host/fake_plugin.h"
#include "tests/support/memory_fault.h"

namespace fake {
namespace {

using std::string_literals::operator""s;

TEST_F(HostTest, AStringKeepsItsBytesAndItsEncoding) {
  const String string = fake::entry<String(const char*, int32_t)>("REALBuildString")("a\0b", 3);
  EXPECT_EQ(encodingOf(string), host::kEncodingUnknown);
  fake::entry<void(String, uint32_t)>("REALSetStringEncoding")(string, host::kEncodingAscii);
  EXPECT_EQ(encodingOf(string), host::kEncodingAscii);
  EXPECT_EQ(content(string), "a\0b"s);
  EXPECT_STREQ(fake::entry<const char*(String)>("StringGetCString")(string), "a");
  unlockString(string);
}

TEST_F(HostTest, AStringBecomesACoreFoundationString) {
  const String string = build("na\xEFve", host::kEncodingWindowsLatin1);
  const auto copy = fake::entry<CFStringRef(String, bool)>("REALGetStringCFString");
  const CFStringRef text = copy(string, false);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(CFStringGetLength(text), 5);
  EXPECT_EQ(CFStringGetCharacterAtIndex(text, 2), 0xEF);
  CFRelease(text);
  unlockString(string);
  const String broken = build("\xFF", host::kEncodingUtf8);
  EXPECT_EQ(copy(broken, false), nullptr);
  unlockString(broken);
}

TEST_F(HostTest, StringDataComesInTheEncodingAskedFor) {
  struct {
    char* data;
    int32_t length;
    uint32_t encoding;
  } data{};
  const String string = build("é");
  const auto fill = fake::entry<bool(String, uint32_t, void*)>("PluginGetStringData");
  ASSERT_TRUE(fill(string, host::kEncodingMacRoman, &data));
  EXPECT_EQ(std::string(data.data, 1), "\x8E");
  EXPECT_EQ(data.length, 1);
  EXPECT_EQ(data.encoding, host::kEncodingMacRoman);
  EXPECT_EQ(standin::ledgerLine("host string data"), 1);
  fake::entry<void(void*)>("PluginDisposeStringData")(&data);
  EXPECT_EQ(standin::ledgerLine("host string data"), 0);
  EXPECT_FALSE(fill(string, host::kEncodingAscii, &data));
  unlockString(string);
}

TEST_F(HostTest, LenBCountsBytesAndIsFoundByItsExactText) {
  const auto load = fake::entry<void*(Object, const char*)>("REALLoadGlobalMethod");
  EXPECT_EQ(load(nullptr, "LenB(s as string) as integer"), nullptr);
  void* const lenB = load(nullptr, "LenB( s as string ) as integer");
  ASSERT_NE(lenB, nullptr);
  const String string = build("é");
  EXPECT_EQ(reinterpret_cast<int32_t (*)(String)>(lenB)(string), 2);
  unlockString(string);
}

uint32_t wordAt(String string, int index) {
  return static_cast<const uint32_t*>(string)[index];
}

class OldStrings : public HostTest {
 protected:
  OldStrings() : HostTest(host::oldHost()) {}
};

TEST_F(OldStrings, ShowTheirTextOneByteInWhileLocked) {
  const host::Value text("héllo");
  String const string = text.handle();
  lockString(string);
  EXPECT_EQ(wordAt(string, 3), 6u);
  EXPECT_STREQ(reinterpret_cast<const char*>(wordAt(string, 1)) + 1, "héllo");
  lockString(string);
  unlockString(string);
  EXPECT_STREQ(reinterpret_cast<const char*>(wordAt(string, 1)) + 1, "héllo");
  unlockString(string);
  EXPECT_NE(wordAt(string, 3), 6u);
}

TEST_F(OldStrings, CannotBeReadWithoutALock) {
  const host::Value text("héllo");
  EXPECT_MEMORY_FAULT(EXPECT_EQ(*reinterpret_cast<volatile const char*>(wordAt(text.handle(), 1)), 0));
}

TEST_F(OldStrings, HideWhatOldHostsLack) {
  EXPECT_EQ(host::resolve("PluginGetStringData"), nullptr);
  EXPECT_EQ(host::resolve("REALGetStringCFString"), nullptr);
  EXPECT_NE(host::resolve("StringGetCString"), nullptr);
}

TEST_F(HostTest, NewStringsShowNothingEvenWhenLocked) {
  const host::Value text("hello");
  lockString(text.handle());
  EXPECT_NE(wordAt(text.handle(), 3), 5u);
  EXPECT_MEMORY_FAULT(EXPECT_EQ(*reinterpret_cast<volatile const char*>(wordAt(text.handle(), 1)), 0));
  unlockString(text.handle());
}

TEST_F(HostTest, TheVersionThatThePlugInWasToldDecides) {
  host::settings().version = 2014;
  standin::failCall("REALGetRBVersion", 1);
  EXPECT_EQ(fake::entry<double()>("REALGetRBVersion")(), 0);
  standin::clearFailures();
  const host::Value text("hello");
  lockString(text.handle());
  EXPECT_EQ(wordAt(text.handle(), 3), 5u);
  unlockString(text.handle());
}

}  // namespace
}  // namespace fake
