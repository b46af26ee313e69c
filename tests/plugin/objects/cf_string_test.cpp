// Between host strings and CFStrings, one text at a time.
#include <cmath>
#include <cstring>

#include "bridge/strings.h"
#include "host/startup.h"
#include "tests/plugin/objects/fixture.h"

// What the platform is given to write a text to; this program is linked with --wrap for it.
static std::vector<CFIndex> rooms;
static bool filled = false;  // with text up to the last byte, and no zero behind it
extern "C" Boolean __real_CFStringGetCString(CFStringRef, char*, CFIndex, CFStringEncoding);
extern "C" Boolean __wrap_CFStringGetCString(CFStringRef text, char* buffer, CFIndex size,
                                             CFStringEncoding encoding) {
  rooms.push_back(size);
  if (filled) {
    memset(buffer, 'x', static_cast<size_t>(size));
    return true;
  }
  return __real_CFStringGetCString(text, buffer, size, encoding);
}

namespace {

class CFStrings : public ObjectsTest {};

Owned<CFStringRef> cfString(const std::u16string& units) {
  return adopt(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()),
                                            static_cast<CFIndex>(units.size())));
}

TEST_F(CFStrings, NullIsTheNullString) {
  start();
  EXPECT_FALSE(CFString2RBString(nullptr));
}

TEST_F(CFStrings, TheEmptyTextIsTheNullStringNotAnEmptyOne) {
  start();
  const auto text = cfString(u"");
  EXPECT_EQ(std::vector<std::string>{"CFStringGetLength"},
            callsOf([&] { EXPECT_FALSE(CFString2RBString(text.get())); }));
}

// The room that the platform is given: 600 bytes on the stack, or as much as the text may take on the heap.
TEST_F(CFStrings, HaveRoomFor600BytesOr6AUnit) {
  start();
  for (const auto& [length, room] :
       {std::pair{1u, 600}, {99u, 600}, {100u, 600}, {101u, 606}, {1000u, 6000}}) {
    rooms.clear();
    CFString2RBString(cfString(std::u16string(length, u'x')).get());
    EXPECT_EQ(std::vector<CFIndex>{room}, rooms) << length;
  }
}

TEST_F(CFStrings, EndAlsoWhereThePlatformFillsTheRoom) {
  start();
  filled = true;
  const auto string = CFString2RBString(CFSTR("text"));
  filled = false;
  EXPECT_EQ(std::string(600, 'x'), stringOf(string.get()).bytes());
}

class Length : public CFStrings, public testing::WithParamInterface<size_t> {};

TEST_P(Length, IsKeptThereAndBack) {
  start();
  for (const char16_t unit : {u'x', u'\u00E9', u'\u6771'}) {
    const std::u16string units(GetParam(), unit);
    const auto string = CFString2RBString(cfString(units).get());
    ASSERT_TRUE(string);
    EXPECT_EQ(host::kEncodingUtf8, stringOf(string.get()).encoding());
    const auto back = RBString2CFString(string.get());
    ASSERT_TRUE(back);
    EXPECT_TRUE(CFEqual(cfString(units).get(), back.get()));
  }
}

INSTANTIATE_TEST_SUITE_P(Units, Length, testing::Values(1, 98, 99, 100, 101, 1000, 100000));

TEST_F(CFStrings, SurrogatePairsAreOneCharacter) {
  start();
  for (const size_t count : {1u, 49u, 50u, 1000u}) {
    std::u16string units;
    std::string utf8;
    for (size_t i = 0; i < count; ++i) {
      units += u"\U0001F600";
      utf8 += "\xF0\x9F\x98\x80";
    }
    EXPECT_EQ(utf8, stringOf(CFString2RBString(cfString(units).get()).get()).bytes());
  }
}

TEST_F(CFStrings, UnpairedSurrogatesMakeTheNullString) {
  start();
  for (const char16_t unit : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDFFF'}) {
    for (const size_t length : {0u, 98u, 99u, 500u}) {
      EXPECT_FALSE(CFString2RBString(cfString(std::u16string(length, u'x') + unit).get()));
    }
  }
}

TEST_F(CFStrings, AZeroUnitEndsTheHostString) {
  start();
  const auto string = CFString2RBString(cfString(std::u16string(u"one\0two", 7)).get());
  EXPECT_EQ("one", stringOf(string.get()).bytes());
}

TEST_F(CFStrings, AZeroUnitAtTheStartMakesTheNullString) {
  start();
  for (const size_t length : {1u, 99u, 100u}) {
    const auto text = cfString(std::u16string(length, u'\0'));
    EXPECT_EQ((Calls{"CFStringGetLength", "CFStringGetCString"}),
              callsOf([&] { EXPECT_FALSE(CFString2RBString(text.get())); }));
  }
}

// Every way to an empty host string, which is a handle with no bytes.
struct HostCase {
  const char* what;
  host::Settings settings;
};
void PrintTo(const HostCase& row, std::ostream* out) {
  *out << row.what;
}
host::Settings without(host::Settings settings, std::set<std::string> names) {
  settings.hidden.insert(names.begin(), names.end());
  return settings;
}

class EmptyString : public CFStrings, public testing::WithParamInterface<HostCase> {};

TEST_P(EmptyString, IsTheEmptyText) {
  start(GetParam().settings);
  for (const uint32_t encoding :
       {host::kEncodingUtf8, host::kEncodingUtf16, host::kEncodingMacRoman, host::kEncodingUnknown}) {
    const auto string = host::Value::string("", encoding);
    const auto text = RBString2CFString(handle(string));
    ASSERT_TRUE(text) << encoding;
    EXPECT_EQ(0, CFStringGetLength(text.get()));
  }
}

INSTANTIATE_TEST_SUITE_P(Hosts, EmptyString,
                         testing::Values(HostCase{"converted", {}},
                                         HostCase{"by the host's bytes",
                                                  without({}, {"REALGetStringCFString"})},
                                         HostCase{"by bytes copied here",
                                                  without({}, {"REALGetStringCFString", "PluginGetStringData",
                                                               "PluginDisposeStringData"})},
                                         HostCase{"from an old host's buffer", host::oldHost()}));

TEST_F(CFStrings, AreNullWhereTheHostTellsNoBytes) {
  start(without({}, {"REALGetStringCFString", "PluginGetStringData", "StringGetCString"}));
  for (const uint32_t encoding : {host::kEncodingUtf8, host::kEncodingUtf16}) {
    EXPECT_FALSE(RBString2CFString(handle(host::Value::string("text", encoding))));
  }
}

// An old host's string whose text is nowhere.
int locked = 0;
void lockString(REALstring) {
  ++locked;
}
void unlockString(REALstring) {
  --locked;
}
void* resolveLocks(const char* name) {
  if (strcmp(name, "REALLockString") == 0) return reinterpret_cast<void*>(lockString);
  if (strcmp(name, "REALUnlockString") == 0) return reinterpret_cast<void*>(unlockString);
  return nullptr;
}

TEST_F(CFStrings, AreNullForAnOldStringWithoutABuffer) {
  gResolver = resolveLocks;
  rbversion = 2011.43;
  uint32_t record[4] = {0, 0, 0, 7};
  EXPECT_FALSE(RBString2CFString(reinterpret_cast<REALstring>(record)));
  EXPECT_EQ(0, locked);
}

TEST_F(CFStrings, OfOddUTF16BytesLeaveOutTheLast) {
  start(without({}, {"REALGetStringCFString"}));
  const auto string = host::Value::string(std::string("a\0b\0c", 5), host::kEncodingUtf16);
  const auto text = RBString2CFString(handle(string));
  ASSERT_TRUE(text);
  EXPECT_TRUE(CFEqual(CFSTR("ab"), text.get()));
}

TEST_F(CFStrings, WithoutTheEncodingsServiceAreMacRoman) {
  start(without({}, {"REALGetStringCFString", "REALGetStringEncoding"}));
  const auto string = host::Value::string("caf\x8E", host::kEncodingUtf8);
  const auto text = RBString2CFString(handle(string));
  ASSERT_TRUE(text);
  EXPECT_TRUE(CFEqual(cfString(u"caf\u00E9").get(), text.get()));
}

}  // namespace
