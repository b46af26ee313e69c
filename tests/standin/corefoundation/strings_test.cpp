#include <cstring>
#include <vector>

#include "tests/standin/corefoundation/support.h"

namespace {

class Strings : public LedgerTest {};

std::vector<UInt8> bytesIn(CFStringRef string, CFStringEncoding encoding, UInt8 lossByte, bool external) {
  const CFRange all = {0, CFStringGetLength(string)};
  CFIndex size = 0;
  CFStringGetBytes(string, all, encoding, lossByte, external, nullptr, 0, &size);
  std::vector<UInt8> bytes(static_cast<size_t>(size));
  CFIndex used = 0;
  CFStringGetBytes(string, all, encoding, lossByte, external, bytes.data(), size, &used);
  EXPECT_EQ(used, size);
  return bytes;
}

struct EncodingRow {
  const char* name;
  CFStringEncoding encoding;
  const char* text;
};

TEST_F(Strings, EveryEncodingComesBackAsItWent) {
  const EncodingRow rows[] = {
      {"MacRoman", kCFStringEncodingMacRoman, "caf\u00e9 \u2022 \u20ac"},
      {"Windows", kCFStringEncodingWindowsLatin1, "caf\u00e9 \u20ac \u2014"},
      {"ISO", kCFStringEncodingISOLatin1, "caf\u00e9 \u00ff"},
      {"NextStep", kCFStringEncodingNextStepLatin, "caf\u00e9 \ufb01"},
      {"ASCII", kCFStringEncodingASCII, "plain"},
      {"non-lossy ASCII", kCFStringEncodingNonLossyASCII, "a\\b\\u00e9 \u00e9 \u65e5 \U0001F600"},
      {"ISO Latin 2", 0x0202, "plain \u0160"},
      {"ISO Latin 9", 0x020F, "plain \u20ac"},
      {"Windows Latin 2", 0x0501, "plain \u0141"},
      {"Windows Cyrillic", 0x0502, "plain \u042f"},
      {"GB 18030", 0x0632, "plain \u65e5 \U0001F600"},
      {"Shift JIS", 0x0A01, "plain \u65e5\uff76"},
      {"Big5", 0x0A03, "plain \u65e5"},
      {"UTF-8", kCFStringEncodingUTF8, "\u00e9 \u65e5 \U0001F600"},
      {"UTF-16", kCFStringEncodingUTF16, "\u00e9 \u65e5 \U0001F600"},
      {"UTF-16BE", kCFStringEncodingUTF16BE, "\u00e9 \u65e5 \U0001F600"},
      {"UTF-16LE", kCFStringEncodingUTF16LE, "\u00e9 \u65e5 \U0001F600"},
      {"UTF-32BE", kCFStringEncodingUTF32BE, "\u00e9 \u65e5 \U0001F600"},
      {"UTF-32LE", kCFStringEncodingUTF32LE, "\u00e9 \u65e5 \U0001F600"},
  };
  for (const EncodingRow& row : rows) {
    const auto string = makeString(row.text);
    for (const bool external : {false, true}) {
      const std::vector<UInt8> bytes = bytesIn(string.get(), row.encoding, 0, external);
      const Owned<CFStringRef> back(CFStringCreateWithBytes(
          nullptr, bytes.data(), static_cast<CFIndex>(bytes.size()), row.encoding, external));
      EXPECT_EQ(textOf(back.get()), row.text) << row.name << (external ? " external" : "");
    }
    const CFIndex most = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string.get()), row.encoding);
    const std::vector<UInt8> unmarked = bytesIn(string.get(), row.encoding, 0, false);
    EXPECT_LE(static_cast<CFIndex>(unmarked.size()), most) << row.name;
  }
}

// Letters that tell each encoding from the others, but for those that extend it, as iconv and Python read
// them.
TEST_F(Strings, EachEncodingHasItsOwnLetters) {
  constexpr struct {
    CFStringEncoding encoding;
    const char* bytes;
    const char* text;
  } kRows[] = {
      {0x0006, "\x81\x80", "\u00b9\u00c4"},
      {0x0007, "\xA2\x80", "\u0490\u0410"},
      {0x001D, "\x81\x80", "\u0100\u00c4"},
      {0x0023, "\x81\x80", "\u00c5\u00c4"},
      {0x0202, "\xA5\xA1", "\u013d\u0104"},
      {0x0203, "\xA1\xA2", "\u0126\u02d8"},
      {0x0204, "\xA2\xA1", "\u0138\u0104"},
      {0x0205, "\xA1\xA2", "\u0401\u0402"},
      {0x0206, "\xD7\xA4", "\u0637\u00a4"},
      {0x0207, "\xA1\xA2", "\u2018\u2019"},
      {0x0208, "\xDF\xA2", "\u2017\u00a2"},
      {0x0209, "\xD0\xA1", "\u011e\u00a1"},
      {0x020A, "\xA2\xA1", "\u0112\u0104"},
      {0x020B, "\xA1\xA2", "\u0e01\u0e02"},
      {0x020D, "\xA1\xA2", "\u201d\u00a2"},
      {0x020E, "\xA1\xA2", "\u1e02\u1e03"},
      {0x020F, "\xA6\xA1", "\u0160\u00a1"},
      {0x0400, "\x9D\x80", "\u00a5\u00c7"},
      {0x0405, "\x80\x81", "\u0391\u0392"},
      {0x0406, "\x80\x81", "\u0106\u00fc"},
      {0x0410, "\xD0\x80", "\u00f0\u00c7"},
      {0x0412, "\x85\x80", "\u016f\u00c7"},
      {0x0413, "\x80\x81", "\u0452\u0402"},
      {0x0414, "\x8D\x80", "\u0131\u00c7"},
      {0x0415, "\x84\x80", "\u00e3\u00c7"},
      {0x0416, "\x8B\x80", "\u00d0\u00c7"},
      {0x0417, "\x80\x81", "\u05d0\u05d1"},
      {0x0418, "\x84\x80", "\u00c2\u00c7"},
      {0x0419, "\x80\x81", "\u00b0\u00b7"},
      {0x041A, "\xAF\x80", "\u00a4\u00c7"},
      {0x041B, "\xA1\x80", "\u0431\u0410"},
      {0x041C, "\x86\xD6", "\u0386\u03b1"},
      {0x041D, "\xA1\x80", "\u0e01\u20ac"},
      {0x0420, "\x93\xFA\x96\x7B", "\u65e5\u672c"},
      {0x0421, "\xD6\xD0\x81\x40", "\u4e2d\u4e02"},
      {0x0422, "\xB0\xA1\x81\x41", "\uac00\uac02"},
      {0x0423, "\xA4\xA4\xA4\xE5", "\u4e2d\u6587"},
      {0x0501, "\x8C\x80", "\u015a\u20ac"},
      {0x0502, "\x80\x81", "\u0402\u0403"},
      {0x0503, "\xA1\x80", "\u0385\u20ac"},
      {0x0504, "\x8A\x83", "\u0160\u0192"},
      {0x0505, "\xA4\x80", "\u20aa\u20ac"},
      {0x0506, "\x81\x80", "\u067e\u20ac"},
      {0x0507, "\x8D\x80", "\u00a8\u20ac"},
      {0x0508, "\xFE\x80", "\u20ab\u20ac"},
      {0x0631, "\xD6\xD0\x81\x40", "\u4e2d\u4e02"},
      {0x0632, "\xD6\xD0\x81\x30\x84\x36", "\u4e2d\u00a5"},
      {0x0920, "\xC6\xFC\xCB\xDC", "\u65e5\u672c"},
      {0x0930, "\xD6\xD0", "\u4e2d"},
      {0x0931, "\xC4\xE3\xC5\xC6", "\u4e2d\u6587"},
      {0x0940, "\xB0\xA1", "\uac00"},
      {0x0A01, "\x93\xFA\x96\x7B", "\u65e5\u672c"},
      {0x0A02, "\xA4\x80", "\u2553\u2500"},
      {0x0A03, "\xA4\xA4\xA4\xE5", "\u4e2d\u6587"},
      {0x0A06, "\x87\x40\xA4\xA4", "\u43f0\u4e2d"},
      {0x0A08, "\xA4\x80", "\u0454\u2500"},
  };
  for (const auto& row : kRows) {
    const auto* const bytes = reinterpret_cast<const UInt8*>(row.bytes);
    const auto length = static_cast<CFIndex>(std::strlen(row.bytes));
    const Owned<CFStringRef> string(CFStringCreateWithBytes(nullptr, bytes, length, row.encoding, false));
    ASSERT_TRUE(string) << row.encoding;
    EXPECT_EQ(textOf(string.get()), row.text) << row.encoding;
    EXPECT_EQ(bytesIn(string.get(), row.encoding, 0, false), std::vector<UInt8>(bytes, bytes + length))
        << row.encoding;
  }
}

TEST_F(Strings, TheGreatestSizeForAnEncodingCountsNoMark) {
  const std::pair<CFStringEncoding, CFIndex> rows[] = {{kCFStringEncodingUTF8, 9},
                                                       {kCFStringEncodingUTF16, 6},
                                                       {kCFStringEncodingUTF32, 12},
                                                       {kCFStringEncodingMacRoman, 3},
                                                       {0x0A01, 6}};
  for (const auto& [encoding, most] : rows) {
    EXPECT_EQ(CFStringGetMaximumSizeForEncoding(3, encoding), most) << encoding;
  }
}

TEST_F(Strings, UTF32IsReadAsItsMarkSaysAndElseBigEndian) {
  const std::vector<UInt8> rows[] = {
      {0, 0, 0, 0x41}, {0xFF, 0xFE, 0, 0, 0x41, 0, 0, 0}, {0, 0, 0xFE, 0xFF, 0, 0, 0, 0x41}};
  for (const std::vector<UInt8>& bytes : rows) {
    for (const bool external : {false, true}) {
      const Owned<CFStringRef> string(CFStringCreateWithBytes(
          nullptr, bytes.data(), static_cast<CFIndex>(bytes.size()), kCFStringEncodingUTF32, external));
      EXPECT_EQ(textOf(string.get()), "A") << bytes.size();
    }
  }
  const std::vector<UInt8> little = {0xFF, 0xFE, 0, 0, 0x41, 0, 0, 0};
  EXPECT_EQ(bytesIn(CFSTR("A"), kCFStringEncodingUTF32, 0, true), little);
}

TEST_F(Strings, NonLossyASCIIWritesEverythingInASCII) {
  const auto string = makeString("a\\\u00e9\u65e5\U0001F600");
  char text[64];
  ASSERT_TRUE(CFStringGetCString(string.get(), text, sizeof text, kCFStringEncodingNonLossyASCII));
  EXPECT_STREQ(text, "a\\\\\\351\\u65e5\\ud83d\\ude00");
  const Owned<CFStringRef> loose(
      CFStringCreateWithCString(nullptr, "\\ \\q \\u12 \\400", kCFStringEncodingNonLossyASCII));
  EXPECT_EQ(textOf(loose.get()), "\\ \\q \\u12 \\400");
}

TEST_F(Strings, ALetterBeyondAsciiIsSeenWhereverItStands) {
  for (size_t length = 1; length < 20; ++length) {
    for (size_t at = 0; at < length; ++at) {
      std::string bytes(length, 'a');
      bytes[at] = '\x8E';  // in MacRoman, é
      const Owned<CFStringRef> string(
          CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                  static_cast<CFIndex>(length), kCFStringEncodingMacRoman, false));
      EXPECT_EQ(CFStringGetCStringPtr(string.get(), kCFStringEncodingASCII), nullptr);
      EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), static_cast<CFIndex>(at)), 0xE9);
    }
  }
}

TEST_F(Strings, UnitsMayLieAtAnOddAddress) {
  const char16_t units[] = u"odd \u00e9";
  char bytes[1 + sizeof units];
  std::memcpy(bytes + 1, units, sizeof units);
  const Owned<CFStringRef> string(
      CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(bytes + 1), 5));
  EXPECT_TRUE(CFEqual(string.get(), CFSTR("odd \u00e9")));
}

TEST_F(Strings, ExternalTextOpensWithAMarkThatIsUnderstoodInBothOrders) {
  const std::vector<UInt8> little = {0xFF, 0xFE, 0x41, 0x00};
  EXPECT_EQ(bytesIn(CFSTR("A"), kCFStringEncodingUTF16, 0, true), little);
  const UInt8 big[] = {0xFE, 0xFF, 0x00, 0x41};
  const Owned<CFStringRef> string(CFStringCreateWithBytes(nullptr, big, 4, kCFStringEncodingUTF16, true));
  EXPECT_EQ(textOf(string.get()), "A");
}

TEST_F(Strings, WhatAnEncodingLacksBecomesTheLossByteOrEndsTheConversion) {
  const auto string = makeString("a\U0001F600b");
  const std::vector<UInt8> lossy = {'a', '?', '?', 'b'};  // one for each unit
  EXPECT_EQ(bytesIn(string.get(), kCFStringEncodingASCII, '?', false), lossy);
  EXPECT_EQ(bytesIn(string.get(), 0x0A01, '?', false), lossy);
  CFIndex used = 0;
  UInt8 buffer[8];
  EXPECT_EQ(CFStringGetBytes(string.get(), {0, 4}, kCFStringEncodingASCII, 0, false, buffer, 8, &used), 1);
  EXPECT_EQ(used, 1);
  char text[8];
  EXPECT_FALSE(CFStringGetCString(string.get(), text, 8, kCFStringEncodingASCII));
}

TEST_F(Strings, ACharacterIsNeverCutInTwoByASmallBuffer) {
  const auto string = makeString("a\u65e5");
  UInt8 buffer[3] = {};
  CFIndex used = 0;
  EXPECT_EQ(CFStringGetBytes(string.get(), {0, 2}, kCFStringEncodingUTF8, 0, false, buffer, 3, &used), 1);
  EXPECT_EQ(used, 1);
}

TEST_F(Strings, UnknownEncodingsGiveNullAndFalse) {
  char text[8];
  for (const CFStringEncoding encoding : {0xFFFFU, kCFStringEncodingInvalidId, 0x0820U, 0x0C01U}) {
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "text", encoding), nullptr) << encoding;
    EXPECT_FALSE(CFStringGetCString(CFSTR("text"), text, 8, encoding)) << encoding;
    EXPECT_EQ(CFStringGetCStringPtr(CFSTR("text"), encoding), nullptr) << encoding;
  }
}

TEST_F(Strings, WideTextThatEndsInPartOfAUnitDropsIt) {
  const UInt8 odd[] = {0x41, 0x00, 0x42};
  const Owned<CFStringRef> string(CFStringCreateWithBytes(nullptr, odd, 3, kCFStringEncodingUTF16, false));
  EXPECT_EQ(textOf(string.get()), "A");
  const Owned<CFStringRef> nothing(CFStringCreateWithBytes(nullptr, odd, 3, kCFStringEncodingUTF32, true));
  EXPECT_EQ(textOf(nothing.get()), "");
}

TEST_F(Strings, WideTextBeyondUnicodeGivesNull) {
  const UInt8 tooLarge[] = {0x00, 0x00, 0x11, 0x00};
  EXPECT_EQ(CFStringCreateWithBytes(nullptr, tooLarge, 4, kCFStringEncodingUTF32LE, false), nullptr);
}

TEST_F(Strings, ConstantsOfOneTextAreOneObject) {
  EXPECT_EQ(CFSTR("same"), CFSTR("same"));
  EXPECT_NE(CFSTR("same"), CFSTR("other"));
  EXPECT_EQ(__CFStringMakeConstantString("sa"
                                         "me"),
            CFSTR("same"));
  char changing[] = "from a buffer";
  const CFStringRef constant = __CFStringMakeConstantString(changing);
  std::strcpy(changing, "changed since");
  EXPECT_EQ(CFSTR("from a buffer"), constant);
}

// Made before main runs, as the keys of a framework are.
const CFStringRef earlyConstant = CFSTR("made by an initialiser");

TEST_F(Strings, ConstantsMayBeMadeByInitialisers) {
  EXPECT_EQ(textOf(earlyConstant), "made by an initialiser");
}

TEST_F(Strings, MutableStringsGrowAndAppendThemselves) {
  const Owned<CFMutableStringRef> string(CFStringCreateMutable(nullptr, 0));
  CFStringAppend(string.get(), CFSTR("ab"));
  for (int i = 0; i < 10; ++i) CFStringAppend(string.get(), string.get());
  EXPECT_EQ(CFStringGetLength(string.get()), 2048);
  EXPECT_EQ(CFStringGetCharacterAtIndex(string.get(), 2047), 'b');
  const UniChar units[] = {0xD83D, 0xDE00};
  CFStringAppendCharacters(string.get(), units, 2);
  EXPECT_EQ(CFStringGetLength(string.get()), 2050);
}

TEST_F(Strings, NormalizationHasFourForms) {
  const std::pair<CFStringNormalizationForm, const char*> rows[] = {
      {kCFStringNormalizationFormD, "e\u0301\ufb01"},
      {kCFStringNormalizationFormKD, "e\u0301fi"},
      {kCFStringNormalizationFormC, "\u00e9\ufb01"},
      {kCFStringNormalizationFormKC, "\u00e9fi"},
  };
  for (const auto& [form, expected] : rows) {
    const Owned<CFMutableStringRef> string(CFStringCreateMutableCopy(nullptr, 0, CFSTR("e\u0301\ufb01")));
    CFStringNormalize(string.get(), form);
    EXPECT_EQ(textOf(string.get()), expected) << form;
  }
}

TEST_F(Strings, CompatibilityFormsPutMarksInOrder) {
  const std::pair<const char*, const char*> rows[] = {{"\u1fc1\u0323", " \u0323\u0308\u0342"},
                                                      {"\u1fee\u0323", " \u0323\u0308\u0301"}};
  for (const auto& [text, expected] : rows) {
    for (const CFStringNormalizationForm form :
         {kCFStringNormalizationFormKD, kCFStringNormalizationFormKC}) {
      const auto given = makeString(text);
      const Owned<CFMutableStringRef> string(CFStringCreateMutableCopy(nullptr, 0, given.get()));
      CFStringNormalize(string.get(), form);
      EXPECT_EQ(textOf(string.get()), expected) << form;
    }
  }
}

struct CompareRow {
  const char* a;
  const char* b;
  CFStringCompareFlags options;
  CFComparisonResult result;
};

TEST_F(Strings, OptionsOfComparing) {
  const CompareRow rows[] = {
      {"abc", "ABC", 0, kCFCompareGreaterThan},
      {"abc", "ABC", kCFCompareCaseInsensitive, kCFCompareEqualTo},
      {"stra\u00dfe", "STRASSE", kCFCompareCaseInsensitive, kCFCompareEqualTo},
      {"caf\u00e9", "cafe\u0301", 0, kCFCompareGreaterThan},
      {"caf\u00e9", "cafe\u0301", kCFCompareNonliteral, kCFCompareEqualTo},
      {"caf\u00e9", "cafe", kCFCompareDiacriticInsensitive, kCFCompareEqualTo},
      {"CAF\u00c9", "cafe", kCFCompareDiacriticInsensitive, kCFCompareLessThan},
      {"CAF\u00c9", "cafe", kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive, kCFCompareEqualTo},
      {"file2", "file10", 0, kCFCompareGreaterThan},
      {"file2", "file10", kCFCompareNumerically, kCFCompareLessThan},
      {"file02", "file2", kCFCompareNumerically, kCFCompareEqualTo},
      {"file2b", "file2a", kCFCompareNumerically, kCFCompareGreaterThan},
      {"b", "A", kCFCompareLocalized, kCFCompareGreaterThan},
      {"a", "B", kCFCompareLocalized, kCFCompareLessThan},
      {"\u00e9a", "f", kCFCompareLocalized, kCFCompareLessThan},
      {"file2", "FILE10", kCFCompareLocalized | kCFCompareNumerically, kCFCompareLessThan},
      {"abc", "ABC", kCFCompareLocalized | kCFCompareCaseInsensitive, kCFCompareEqualTo},
  };
  for (const CompareRow& row : rows) {
    const auto a = makeString(row.a);
    const auto b = makeString(row.b);
    EXPECT_EQ(CFStringCompare(a.get(), b.get(), row.options), row.result)
        << row.a << " " << row.b << " " << row.options;
    EXPECT_EQ(CFStringCompare(b.get(), a.get(), row.options), -row.result)
        << row.b << " " << row.a << " " << row.options;
  }
}

TEST_F(Strings, PrefixesAndSuffixes) {
  EXPECT_TRUE(CFStringHasPrefix(CFSTR("kMDItemPath"), CFSTR("kMD")));
  EXPECT_FALSE(CFStringHasPrefix(CFSTR("kMD"), CFSTR("kMDItemPath")));
  EXPECT_TRUE(CFStringHasSuffix(CFSTR("photo.jpg"), CFSTR(".jpg")));
  EXPECT_FALSE(CFStringHasSuffix(CFSTR("photo.jpg"), CFSTR(".png")));
  for (CFStringRef const whole : {CFSTR("photo"), CFSTR("")}) {
    EXPECT_FALSE(CFStringHasPrefix(whole, CFSTR("")));
    EXPECT_FALSE(CFStringHasSuffix(whole, CFSTR("")));
  }
}

// How text is stored is each library's own business; here these pointers are part of what is quick.
class StringsStrictness : public LedgerTest {};

TEST_F(StringsStrictness, PointersAreGivenToWhatIsStoredThatWayAndNothingElse) {
  const auto narrow = makeString("ascii");
  const auto wide = makeString("\u65e5");
  EXPECT_STREQ(CFStringGetCStringPtr(narrow.get(), kCFStringEncodingUTF8), "ascii");
  EXPECT_EQ(CFStringGetCStringPtr(narrow.get(), kCFStringEncodingUTF16), nullptr);
  EXPECT_EQ(CFStringGetCharactersPtr(narrow.get()), nullptr);
  EXPECT_EQ(CFStringGetCStringPtr(wide.get(), kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFStringGetCharactersPtr(wide.get())[0], 0x65E5);
}

TEST_F(Strings, ASubstringOfWideTextThatIsASCIIEqualsTheSameTextMadeAsASCII) {
  const auto wide = makeString("\u65e5abc");
  const Owned<CFStringRef> part(CFStringCreateWithSubstring(nullptr, wide.get(), {1, 3}));
  EXPECT_TRUE(CFEqual(part.get(), CFSTR("abc")));
  EXPECT_EQ(CFHash(part.get()), CFHash(CFSTR("abc")));
}

}  // namespace
