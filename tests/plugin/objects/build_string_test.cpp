// REALBuildUnicodeString: from bytes in an encoding to a host string.
#include "host/build_string.h"

#include <cstring>

#include "bridge/strings.h"
#include "tests/plugin/objects/fixture.h"

namespace {

class BuildString : public ObjectsTest {
 protected:
  void SetUp() override { start(); }
};

Owned<REALstring> build(const std::string& bytes, uint32_t encoding) {
  return REALBuildUnicodeString(bytes.data(), static_cast<int64_t>(bytes.size()), encoding);
}

std::string utf32(const std::vector<uint32_t>& units) {
  return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(uint32_t));
}

std::string utf16(const std::u16string& units) {
  return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t));
}

TEST_F(BuildString, OfNullDataIsNull) {
  EXPECT_FALSE(REALBuildUnicodeString(nullptr, 5, kCFStringEncodingUTF8));
}

TEST_F(BuildString, OfLengthsBelow1AndFrom2To31OnIsNullWithoutACall) {
  const char byte = 'x';
  const int64_t lengths[] = {0,         -1,       -0x80000000ll, 0x80000000ll, 0x100000000ll, 0x100000001ll,
                             INT64_MAX, INT64_MIN};
  for (const int64_t length : lengths) {
    const auto calls =
        callsOf([&] { EXPECT_FALSE(REALBuildUnicodeString(&byte, length, kCFStringEncodingUTF8)); });
    EXPECT_TRUE(calls.empty()) << length;
  }
}

// A host that only notes how long the string would be.
int32_t lengthAsked = 0;
REALstring noteLength(const char*, int32_t length) {
  lengthAsked = length;
  return nullptr;
}
void* resolveNotingLength(const char* name) {
  return strcmp(name, "REALBuildString") == 0 ? reinterpret_cast<void*>(noteLength) : host::resolve(name);
}

TEST_F(BuildString, OfTheGreatestLengthIsTheHostsToBuild) {
  gResolver = resolveNotingLength;
  const char byte = 'x';
  EXPECT_FALSE(REALBuildUnicodeString(&byte, INT32_MAX, kCFStringEncodingUTF8));
  EXPECT_EQ(INT32_MAX, lengthAsked);
}

struct EncodingCase {
  std::string bytes;
  uint32_t given;
  uint32_t kept;
};
void PrintTo(const EncodingCase& row, std::ostream* out) {
  *out << testing::PrintToString(row.bytes) << " in " << std::hex << row.given << " -> " << row.kept;
}

class PlainPath : public BuildString, public testing::WithParamInterface<EncodingCase> {};

TEST_P(PlainPath, KeepsTheBytesAndChoosesTheEncoding) {
  const auto string = build(GetParam().bytes, GetParam().given);
  EXPECT_EQ(GetParam().bytes, stringOf(string.get()).bytes());
  EXPECT_EQ(GetParam().kept, stringOf(string.get()).encoding());
}

INSTANTIATE_TEST_SUITE_P(Encodings, PlainPath,
                         testing::Values(
                             // MacRoman, Latin 1 and unknown text that is pure ASCII is stored as ASCII; one
                             // high byte keeps the encoding.
                             EncodingCase{"plain", 0x0000, 0x0600}, EncodingCase{"plain", 0x0500, 0x0600},
                             EncodingCase{"plain", 0xFFFF, 0x0600}, EncodingCase{"caf\x8E", 0x0000, 0x0000},
                             EncodingCase{"caf\xE9", 0x0500, 0x0500}, EncodingCase{"caf\xE9", 0xFFFF, 0xFFFF},
                             EncodingCase{"\x80", 0x0000, 0x0000}, EncodingCase{"\x7F", 0x0500, 0x0600},
                             EncodingCase{std::string("a\0b", 3), 0x0000, 0x0600},
                             // Any other encoding is taken as it is.
                             EncodingCase{"plain", 0x08000100, 0x08000100},
                             EncodingCase{"caf\xC3\xA9", 0x08000100, 0x08000100},
                             EncodingCase{"plain", 0x0600, 0x0600}, EncodingCase{"plain", 0x0201, 0x0201}));

TEST_F(BuildString, OfPlainTextIsASCIIWhateverLiesAroundIt) {
  const std::string around = "\x80plain\x80";
  const auto string = REALBuildUnicodeString(around.data() + 1, 5, kCFStringEncodingMacRoman);
  EXPECT_EQ("plain", stringOf(string.get()).bytes());
  EXPECT_EQ(host::kEncodingAscii, stringOf(string.get()).encoding());
}

TEST_F(BuildString, InUTF8IsOneStringAndItsEncoding) {
  EXPECT_EQ(
      (std::vector<std::string>{"resolve REALBuildString", "REALBuildString", "resolve REALSetStringEncoding",
                                "REALSetStringEncoding", "resolve REALUnlockString", "REALUnlockString"}),
      callsOf([] { build("text", kCFStringEncodingUTF8); }));
}

TEST_F(BuildString, FromUTF16IsStoredAsUTF8) {
  const auto string = build(utf16(u"caf\u00E9 \U0001F600"), kCFStringEncodingUnicode);
  EXPECT_EQ("caf\xC3\xA9 \xF0\x9F\x98\x80", stringOf(string.get()).bytes());
  EXPECT_EQ(host::kEncodingUtf8, stringOf(string.get()).encoding());
}

TEST_F(BuildString, FromUTF16BuildsMarksConvertsAndReleasesTheTemporaryString) {
  Owned<REALstring> string;
  EXPECT_EQ(
      (std::vector<std::string>{"resolve REALBuildString", "REALBuildString", "resolve REALSetStringEncoding",
                                "REALSetStringEncoding", "resolve REALConvertString", "REALConvertString",
                                "resolve REALUnlockString", "REALUnlockString"}),
      callsOf([] { build(utf16(u"text"), kCFStringEncodingUnicode).leak(); }));
  EXPECT_EQ(1u, host::stop().size());  // the result, which this test let go
}

// The temporary string stays with the plug-in then; the result doesn't.
TEST_F(BuildString, FromUTF16GivesTheResultBackWhereReleasingTheTemporaryStringThrows) {
  const Calls calls = callsOf([] {
    standin::throwFromCall("REALUnlockString", 1);
    EXPECT_THROW(build(utf16(u"text"), kCFStringEncodingUnicode), standin::PlannedException);
  });
  EXPECT_EQ(2, std::count(calls.begin(), calls.end(), "REALUnlockString"));
  EXPECT_EQ(1u, host::stop().size());
}

TEST_F(BuildString, FromUTF32IsStoredAsUTF8) {
  const auto string = build(utf32({'a', 0xE9, 0x6771}), kCFStringEncodingUTF32);
  EXPECT_EQ("a\xC3\xA9\xE6\x9D\xB1", stringOf(string.get()).bytes());
  EXPECT_EQ(host::kEncodingUtf8, stringOf(string.get()).encoding());
}

TEST_F(BuildString, FromUTF32CutsUnitsTo16Bits) {
  const auto string = build(utf32({0x1F600}), kCFStringEncodingUTF32);
  EXPECT_EQ("\xEF\x98\x80", stringOf(string.get()).bytes());  // U+F600
}

TEST_F(BuildString, FromUTF32LeavesOutTheBytesOfAnUnfinishedUnit) {
  const auto string = build(utf32({'a', 'b'}) + "xyz", kCFStringEncodingUTF32);
  EXPECT_EQ("ab", stringOf(string.get()).bytes());
}

class UTF32Length : public BuildString, public testing::WithParamInterface<size_t> {};

TEST_P(UTF32Length, IsConvertedWhole) {
  std::string bytes = utf32(std::vector<uint32_t>(GetParam() / 4, 'u'));
  bytes.resize(GetParam(), '\0');
  const auto string = build(bytes, kCFStringEncodingUTF32);
  EXPECT_EQ(std::string(GetParam() / 4, 'u'), stringOf(string.get()).bytes());
}

// 799 bytes and less are narrowed on the stack, 800 and more on the heap.
INSTANTIATE_TEST_SUITE_P(Bytes, UTF32Length, testing::Values(4, 5, 792, 796, 799, 800, 801, 804, 400000));

class MissingService : public ObjectsTest,
                       public testing::WithParamInterface<std::tuple<const char*, uint32_t, bool>> {};

TEST_P(MissingService, GivesNullOrAStringOfTheHostsOwnEncoding) {
  const auto& [service, encoding, given] = GetParam();
  host::Settings settings;
  settings.hidden = {service};
  start(settings);
  const auto string = build(utf32({'t', 'e'}), encoding);
  EXPECT_EQ(given, static_cast<bool>(string));
  if (given) {
    EXPECT_EQ(host::kEncodingUnknown, stringOf(string.get()).encoding());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Names, MissingService,
    testing::Values(std::make_tuple("REALBuildString", kCFStringEncodingUTF8, false),
                    std::make_tuple("REALBuildString", kCFStringEncodingUnicode, false),
                    std::make_tuple("REALBuildString", kCFStringEncodingUTF32, false),
                    std::make_tuple("REALSetStringEncoding", kCFStringEncodingUTF8, true),
                    std::make_tuple("REALConvertString", kCFStringEncodingUnicode, false),
                    std::make_tuple("REALConvertString", kCFStringEncodingUTF32, false)));

// A host that reports every lack of memory by the standard exception.
int allocationsLeft = 0;
REALstring buildWhileMemoryLasts(const char* bytes, int32_t length) {
  if (allocationsLeft-- <= 0) throw std::bad_alloc();
  return reinterpret_cast<REALstring (*)(const char*, int32_t)>(host::resolve("REALBuildString"))(bytes,
                                                                                                  length);
}
void* resolveWithLittleMemory(const char* name) {
  if (strcmp(name, "REALBuildString") == 0) return reinterpret_cast<void*>(buildWhileMemoryLasts);
  return host::resolve(name);
}

TEST_F(BuildString, WithoutMemoryRaisesOutOfMemoryException) {
  gResolver = resolveWithLittleMemory;
  allocationsLeft = 0;
  EXPECT_FALSE(build("text", kCFStringEncodingUTF8));
  const auto raised = host::takeExceptions();
  ASSERT_EQ(1u, raised.size());
  EXPECT_EQ("OutOfMemoryException", raised[0].className);
  EXPECT_EQ("", raised[0].message);  // no memory for the message either
  EXPECT_EQ(0, raised[0].errorNumber);
}

// The same for the text of the platform, which is built another way.
TEST_F(BuildString, OfACFStringWithoutMemoryRaisesOutOfMemoryException) {
  gResolver = resolveWithLittleMemory;
  allocationsLeft = 0;
  EXPECT_FALSE(CFString2RBString(CFSTR("text")));
  const auto raised = host::takeExceptions();
  ASSERT_EQ(1u, raised.size());
  EXPECT_EQ("OutOfMemoryException", raised[0].className);
}

// As C text it ends before its first character.
TEST_F(BuildString, OfACFStringThatStartsWithAZeroCharacterIsNullAndNotAskedFor) {
  const UniChar units[] = {0, 'a'};
  const auto text = adopt(CFStringCreateWithCharacters(kCFAllocatorDefault, units, 2));
  EXPECT_EQ((Calls{"CFStringGetLength", "CFStringGetCString"}),
            callsOf([&] { EXPECT_FALSE(CFString2RBString(text.get())); }));
}

// The first string fails, and the message fits again.
REALstring buildAllButTheFirst(const char* bytes, int32_t length) {
  if (allocationsLeft++ == 0) throw std::bad_alloc();
  return reinterpret_cast<REALstring (*)(const char*, int32_t)>(host::resolve("REALBuildString"))(bytes,
                                                                                                  length);
}
void* resolveWithOneFailure(const char* name) {
  if (strcmp(name, "REALBuildString") == 0) return reinterpret_cast<void*>(buildAllButTheFirst);
  return host::resolve(name);
}

TEST_F(BuildString, WithoutMemoryForTheTextAloneTheExceptionHasItsMessage) {
  for (const uint32_t encoding : {kCFStringEncodingUTF8, kCFStringEncodingUnicode, kCFStringEncodingUTF32}) {
    gResolver = resolveWithOneFailure;
    allocationsLeft = 0;
    EXPECT_FALSE(build(std::string(800, '\0'), encoding));
    const auto raised = host::takeExceptions();
    ASSERT_EQ(1u, raised.size());
    EXPECT_EQ("OutOfMemoryException", raised[0].className);
    EXPECT_EQ("Failed to allocate memory for a string.", raised[0].message);
  }
}

struct Foreign {};
REALstring throwForeign(const char*, int32_t) {
  throw Foreign();
}
void* resolveForeign(const char* name) {
  if (strcmp(name, "REALBuildString") == 0) return reinterpret_cast<void*>(throwForeign);
  return host::resolve(name);
}

TEST_F(BuildString, LetsOtherExceptionsPassAndFreesItsBuffer) {
  gResolver = resolveForeign;
  EXPECT_THROW(build(std::string(8000, '\0'), kCFStringEncodingUTF32), Foreign);
  EXPECT_EQ(0u, host::takeExceptions().size());
}

}  // namespace
