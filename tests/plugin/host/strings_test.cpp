// Texts on their way from host code to the platform and back, seen from both ends: the search window shows
// what the platform was given, a query's own string shows what host code gets.
#include <cmath>

#include "standin/carbon/control.h"
#include "tests/plugin/fixture.h"

namespace {

struct HostCase {
  const char* what;
  host::Settings settings;
};
void PrintTo(const HostCase& row, std::ostream* out) {
  *out << row.what;
}

host::Settings hosts(double version, std::set<std::string> hidden) {
  host::Settings settings = settingsOf(version);
  settings.hidden.insert(hidden.begin(), hidden.end());
  return settings;
}

// Every way on which RBString2CFString can get at a text.
const HostCase kHosts[] = {
    {"2014.1, the host converts", hosts(2014.1, {})},
    {"2012.0, the host converts", hosts(2012.0, {})},
    {"2014.1, by the host's bytes", hosts(2014.1, {"REALGetStringCFString"})},
    {"2012.0, by the host's bytes", hosts(2012.0, {"REALGetStringCFString"})},
    {"2014.1, by bytes freed here",
     hosts(2014.1, {"REALGetStringCFString", "PluginDisposeStringData", "PluginGetStringData"})},
    {"2014.1, by bytes copied here and given to the host's disposal",
     hosts(2014.1, {"REALGetStringCFString", "PluginGetStringData"})},
    {"NaN, by the host's bytes", hosts(std::nan(""), {"REALGetStringCFString"})},
    {"2011.04, from the string's buffer", hosts(2011.04, {})},
    {"2009.05, from the string's buffer", hosts(2009.05, {})},
};

class ToThePlatform : public PluginTest, public testing::WithParamInterface<HostCase> {
 protected:
  void SetUp() override {
    standin::takeSearchWindow();
    start(GetParam().settings);
  }

  // What the platform was given, in UTF-8; none for null.
  std::optional<std::string> given(const host::Value& string) {
    host::callGlobal("ShotlightZNK", string);
    const auto window = standin::takeSearchWindow();
    EXPECT_EQ(1, window.shown);
    return window.text;
  }
};

TEST_P(ToThePlatform, ANullStringIsNull) {
  EXPECT_EQ(std::nullopt, given(host::Value::nullString()));
}

TEST_P(ToThePlatform, TextsOfEveryLengthArriveWhole) {
  for (const size_t length : {1u, 99u, 100u, 101u, 100000u}) {
    const std::string text(length, 'x');
    EXPECT_EQ(text, given(text)) << length;
  }
}

std::string utf16(const std::u16string& units) {
  return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

struct TextCase {
  const char* encodingName;
  uint32_t encoding;
  std::string bytes;
  std::string utf8;
};
const TextCase kTexts[] = {
    {"MacRoman", host::kEncodingMacRoman, "caf\x8E", "caf\xC3\xA9"},
    {"Windows Latin 1", host::kEncodingWindowsLatin1, "caf\xE9 \x80", "caf\xC3\xA9 \xE2\x82\xAC"},
    {"ASCII", host::kEncodingAscii, "cafe", "cafe"},
    {"UTF-8", host::kEncodingUtf8, "caf\xC3\xA9 \xF0\x9F\x98\x80", "caf\xC3\xA9 \xF0\x9F\x98\x80"},
    {"UTF-16", host::kEncodingUtf16, utf16(u"caf\u00E9 \U0001F600"), "caf\xC3\xA9 \xF0\x9F\x98\x80"},
    {"unknown, taken as MacRoman", host::kEncodingUnknown, "caf\x8E", "caf\xC3\xA9"},
};

TEST_P(ToThePlatform, TextsArriveInEveryEncoding) {
  for (const TextCase& text : kTexts) {
    SCOPED_TRACE(text.encodingName);
    EXPECT_EQ(text.utf8, given(host::Value::string(text.bytes, text.encoding)));
  }
}

TEST_P(ToThePlatform, BytesThatAreNoTextAreNull) {
  EXPECT_EQ(std::nullopt, given(host::Value::string("caf\xE9", host::kEncodingUtf8)));
}

TEST_P(ToThePlatform, WithoutMemoryATextIsNull) {
  // On a host that converts, the bytes are tried after it; so let all conversions fail.
  host::settings().hidden.insert("REALGetStringCFString");
  standin::failCall("CFStringCreateWithCString", 1);
  EXPECT_EQ(std::nullopt, given("text"));
  EXPECT_EQ(1, standin::failuresFired());
  EXPECT_EQ("text", given("text"));
}

INSTANTIATE_TEST_SUITE_P(Hosts, ToThePlatform, testing::ValuesIn(kHosts));

class Strings : public PluginTest {
 protected:
  Calls callsFor(const host::Settings& settings) {
    start(settings);
    return callsOf([] { host::callGlobal("ShotlightZNK", "text"); });
  }
};

TEST_F(Strings, OnANewHostAreAskedForOnce) {
  EXPECT_EQ(
      (Calls{"resolve REALGetStringCFString", "REALGetStringCFString", "HISearchWindowShow", "CFRelease"}),
      callsFor(hosts(2012.0, {})));
}

TEST_F(Strings, OnANewHostAreAskedForTwiceBeforeTheirBytesAreRead) {
  start(hosts(2012.0, {}));
  standin::failCall("REALGetStringCFString", 1);
  EXPECT_EQ((Calls{"resolve REALGetStringCFString", "REALGetStringCFString",  // the first cell
                   "resolve REALGetStringCFString", "REALGetStringCFString",  // the second, of its own
                   "HISearchWindowShow", "CFRelease"}),
            callsOf([] { host::callGlobal("ShotlightZNK", "text"); }));
}

TEST_F(Strings, OnANewHostWithoutConversionAreReadByTheirBytes) {
  EXPECT_EQ((Calls{"resolve REALGetStringCFString", "resolve REALGetStringCFString",
                   "resolve REALGetStringEncoding", "REALGetStringEncoding", "resolve PluginGetStringData",
                   "PluginGetStringData", "CFStringCreateWithCString", "resolve PluginDisposeStringData",
                   "PluginDisposeStringData", "HISearchWindowShow", "CFRelease"}),
            callsFor(hosts(2012.0, {"REALGetStringCFString"})));
}

// No number is as old as 2011, nor as new as 2012.
TEST_F(Strings, OnAHostWhoseVersionIsNoNumberAreAskedForOnceAndThenReadByTheirBytes) {
  EXPECT_EQ((Calls{"resolve REALGetStringCFString", "resolve REALGetStringEncoding", "REALGetStringEncoding",
                   "resolve PluginGetStringData", "PluginGetStringData", "CFStringCreateWithCString",
                   "resolve PluginDisposeStringData", "PluginDisposeStringData", "HISearchWindowShow",
                   "CFRelease"}),
            callsFor(hosts(std::nan(""), {"REALGetStringCFString"})));
}

TEST_F(Strings, OnAnOldHostAreReadFromTheLockedBufferAndUnlocked) {
  EXPECT_EQ((Calls{"resolve REALGetStringCFString", "resolve REALGetStringEncoding", "REALGetStringEncoding",
                   "resolve REALLockString", "REALLockString", "CFStringCreateWithCString",
                   "resolve REALUnlockString", "REALUnlockString", "HISearchWindowShow", "CFRelease"}),
            callsFor(hosts(2011.04, {})));
}

TEST_F(Strings, OnAnOldHostThatConvertsAreAskedForOnce) {
  host::Settings settings;
  settings.version = 2011.04;
  EXPECT_EQ(
      (Calls{"resolve REALGetStringCFString", "REALGetStringCFString", "HISearchWindowShow", "CFRelease"}),
      callsFor(settings));
}

TEST_F(Strings, OnAnOldHostWithoutALockAreNull) {
  start(hosts(2011.04, {"REALLockString"}));
  standin::takeSearchWindow();
  host::callGlobal("ShotlightZNK", "text");
  EXPECT_EQ(std::nullopt, standin::takeSearchWindow().text);
}

TEST_F(Strings, OfTheBytesPathEndAtAZeroByte) {
  start(hosts(2014.1, {"REALGetStringCFString"}));
  standin::takeSearchWindow();
  host::callGlobal("ShotlightZNK", host::Value::string(std::string("one\0two", 7), host::kEncodingUtf8));
  EXPECT_EQ("one", standin::takeSearchWindow().text);
}

// By its bytes, UTF-32 ends at the zero bytes of its first character.
TEST_F(Strings, InUTF32ArriveWhereTheHostConverts) {
  start();
  standin::takeSearchWindow();
  const uint32_t units[] = {'a', 0xE9, 0x1F600};
  const std::string bytes(reinterpret_cast<const char*>(units), sizeof units);
  host::callGlobal("ShotlightZNK", host::Value::string(bytes, host::kEncodingUtf32));
  EXPECT_EQ("a\xC3\xA9\xF0\x9F\x98\x80", standin::takeSearchWindow().text);
}

// From the platform to host code.

std::string queryOfLength(size_t length) {
  const std::string start = "kMDItemFSName == \"";
  return start + std::string(length - start.size() - 1, 'x') + "\"";
}

std::string nameQuery(const std::string& name) {
  return "kMDItemFSName == \"" + name + "\"";
}

TEST_F(Strings, FromThePlatformArriveInEveryLength) {
  start();
  for (const size_t length : {20u, 99u, 100u, 101u, 100000u}) {
    const host::Value query = host::construct("MDQueryZNK", queryOfLength(length));
    const host::Value text = host::call(query, "QueryString");
    EXPECT_EQ(queryOfLength(length), text.text());
    EXPECT_EQ(host::kEncodingUtf8, text.encoding());
  }
}

TEST_F(Strings, FromThePlatformOfMoreThanOneByteAUnitArriveInEveryLength) {
  start();
  for (const size_t count : {1u, 80u, 81u, 82u, 33333u}) {
    std::string name;
    for (size_t i = 0; i < count; ++i) name += "\xE6\x9D\xB1";
    const host::Value query = host::construct("MDQueryZNK", nameQuery(name));
    EXPECT_EQ(nameQuery(name), host::call(query, "QueryString").text()) << count;
  }
}

// 18 units stand before the name, and one after it.
TEST_F(Strings, OfUnpairedSurrogatesAreNilOnTheWayBack) {
  start();
  for (const size_t length : {1u, 200u}) {
    const std::u16string text = u"kMDItemFSName == \"" + std::u16string(length, u'x') + u"\xD800\"";
    const host::Value query =
        host::construct("MDQueryZNK", host::Value::string(utf16(text), host::kEncodingUtf16));
    ASSERT_NE(0, host::get(query, "Handle").integer());
    EXPECT_TRUE(host::call(query, "QueryString").isNil());
  }
}

TEST_F(Strings, ThatCantBeConvertedAreNil) {
  start();
  const host::Value query = host::construct("MDQueryZNK", nameQuery("x"));
  standin::failCall("CFStringGetCString", 1);
  EXPECT_TRUE(host::call(query, "QueryString").isNil());
}

}  // namespace
