#include "standin/coreservices/language/characters.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <string>

namespace standin::metadata {
namespace {

// By this the search for words knows where they can't begin, without composing anything.
TEST(AnAsciiCharacter, StillBeginsWhatItComposesTo) {
  int composing = 0;
  for (char32_t next = 0x80; next <= UCHAR_MAX_VALUE; ++next) {
    if (U_IS_SURROGATE(next) || (propertiesOf(next) & kComposesBackward) == 0) continue;
    for (char32_t ascii = 1; ascii < 0x80; ++ascii) {
      const char32_t first = composed(std::u32string{ascii, next})[0];
      if (first == ascii) continue;
      ++composing;
      for (const bool ignoreCase : {false, true}) {
        for (const bool ignoreDiacritics : {false, true}) {
          const TextOptions options{ignoreCase, ignoreDiacritics, false};
          const std::u32string folded = foldCharacter(first, options);
          ASSERT_FALSE(folded.empty());
          EXPECT_TRUE(folded[0] >= 0x80 || folded[0] == foldCharacter(ascii, options)[0])
              << static_cast<unsigned>(ascii) << " and " << static_cast<unsigned>(next);
        }
      }
    }
  }
  EXPECT_GT(composing, 200);  // the letters with one mark
}

TEST(Folding, IsTheSameEachTime) {
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(foldCharacter(U'\u00DF', {true, false, false}), U"ss");
    EXPECT_EQ(foldCharacter(U'\u00DF', {false, true, false}), U"\u00DF");
    EXPECT_EQ(foldCharacter(U'\u00C9', {true, false, false}), U"\u00E9");
    EXPECT_EQ(foldCharacter(U'\u00C9', {false, true, false}), U"E");
    EXPECT_EQ(foldCharacter(U'\u00C9', {true, true, false}), U"e");
    EXPECT_EQ(foldCharacter(U'\u212A', {false, true, false}), U"K");
    EXPECT_EQ(foldCharacter(U'\u0301', {false, true, false}), U"");
    EXPECT_EQ(foldCharacter(U'\U00010400', {true, false, false}), U"\U00010428");  // beyond the basic plane
    EXPECT_EQ(foldCharacter(U'Z', {true, true, false}), U"z");
  }
}

}  // namespace
}  // namespace standin::metadata
