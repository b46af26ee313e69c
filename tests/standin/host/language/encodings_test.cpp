#include "standin/host/language/encodings.h"

#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

using std::string_literals::operator""s;

String converted(String string, uint32_t encoding) {
  return entry<String(String, uint32_t)>("REALConvertString")(string, encoding);
}

struct Conversion {
  std::string utf8;
  uint32_t encoding;
  std::string bytes;
};

void PrintTo(const Conversion& row, std::ostream* out) {
  *out << row.utf8 << " in " << std::hex << row.encoding;
}

class PlainText : public HostTest {};

class Encodings : public HostTest, public testing::WithParamInterface<Conversion> {};

TEST_P(Encodings, ConvertThereAndBack) {
  const String utf8 = build(GetParam().utf8);
  const String there = converted(utf8, GetParam().encoding);
  ASSERT_NE(there, nullptr);
  EXPECT_EQ(content(there), GetParam().bytes);
  EXPECT_EQ(encodingOf(there), GetParam().encoding);
  const String back = converted(there, host::kEncodingUtf8);
  EXPECT_EQ(content(back), GetParam().utf8);
  for (const String string : {utf8, there, back}) unlockString(string);
}

INSTANTIATE_TEST_SUITE_P(, Encodings,
                         testing::Values(Conversion{"Aé€", host::kEncodingMacRoman, "A\x8E\xDB"},
                                         Conversion{"Aé€", host::kEncodingWindowsLatin1, "A\xE9\x80"},
                                         Conversion{"Az", host::kEncodingAscii, "Az"},
                                         Conversion{"A€😀", host::kEncodingUtf16,
                                                    "A\0\xAC\x20\x3D\xD8\x00\xDE"s},
                                         Conversion{"A😀", host::kEncodingUtf32, "A\0\0\0\x00\xF6\x01\x00"s},
                                         Conversion{"A€😀", host::kEncodingUtf8, "A€😀"}));

TEST(Conversions, WhatIsNoTextOrHasNoPlaceIsNotConverted) {
  EXPECT_FALSE(host::convert("\xFF", host::kEncodingUtf8, host::kEncodingUtf16));
  EXPECT_FALSE(host::convert("\xC0\x80", host::kEncodingUtf8, host::kEncodingUtf16));      // overlong
  EXPECT_FALSE(host::convert("\xE0\x80\x80", host::kEncodingUtf8, host::kEncodingUtf16));  // overlong
  EXPECT_FALSE(host::convert("\xED\xA0\x80", host::kEncodingUtf8, host::kEncodingUtf16));  // a surrogate
  EXPECT_FALSE(host::convert("\xE2\x82", host::kEncodingUtf8, host::kEncodingUtf16));      // cut off
  EXPECT_FALSE(host::convert("\x3D\xD8", host::kEncodingUtf16, host::kEncodingUtf8));      // half a pair
  EXPECT_FALSE(host::convert("abc", host::kEncodingUtf16, host::kEncodingUtf8));           // half a unit
  EXPECT_FALSE(host::convert("\x80", host::kEncodingAscii, host::kEncodingUtf8));
  EXPECT_FALSE(host::convert("€", host::kEncodingUtf8, host::kEncodingAscii));
  EXPECT_FALSE(host::convert("中", host::kEncodingUtf8, host::kEncodingMacRoman));
  EXPECT_FALSE(host::convert("a", 0x1234, host::kEncodingUtf8));
}

// Plain text is told apart several bytes at once: a byte beyond it must be seen wherever it stands.
TEST_F(PlainText, EndsAtTheFirstByteThatIsNone) {
  for (size_t length = 1; length < 20; ++length) {
    for (size_t at = 0; at < length; ++at) {
      std::string bytes(length, 'a');
      EXPECT_EQ(host::convert(bytes, host::kEncodingMacRoman, host::kEncodingUtf8), bytes);
      EXPECT_EQ(host::convert(bytes, host::kEncodingAscii, host::kEncodingUtf8), bytes);
      bytes[at] = '\x8E';  // in MacRoman, é
      const std::string expected = std::string(at, 'a') + "\u00e9" + std::string(length - at - 1, 'a');
      EXPECT_EQ(host::convert(bytes, host::kEncodingMacRoman, host::kEncodingUtf8), expected);
      EXPECT_EQ(host::convert(bytes, host::kEncodingAscii, host::kEncodingUtf8), std::nullopt);
      EXPECT_EQ(host::convert(bytes, host::kEncodingUtf8, host::kEncodingMacRoman), std::nullopt);
    }
  }
}

TEST_F(PlainText, HasAnEncodingOnBothSides) {
  EXPECT_EQ(host::convert("a", host::kEncodingUnknown, host::kEncodingUtf8), "a");
  EXPECT_EQ(host::convert("a", host::kEncodingUtf8, host::kEncodingUnknown), std::nullopt);
  EXPECT_EQ(host::convert("a", 12345, host::kEncodingUtf8), std::nullopt);
  EXPECT_EQ(host::convert("a", host::kEncodingUtf8, 12345), std::nullopt);
}

}  // namespace
}  // namespace fake
