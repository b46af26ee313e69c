#include "standin/coreservices/language/text_pattern.h"

#include <gtest/gtest.h>
#include <unicode/utf8.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "standin/coreservices/language/parser.h"

namespace standin::metadata {
namespace {

// `value` as it stands in a query: quotes, wildcards, modifiers.
bool matchesValue(const std::u16string& value, std::string_view text) {
  const auto result = parseQuery(u"k == " + value);
  return std::get<ExpressionRef>(result)->comparison.value.text.matches(text);
}

struct Row {
  const char16_t* value;
  const char* text;
  bool matches;
};

void check(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    const std::u16string value = row.value;
    EXPECT_EQ(matchesValue(value, row.text), row.matches)
        << std::string(value.begin(), value.end()) << " with " << row.text;
  }
}

TEST(TextWithoutWildcards, MatchesTheWholeValueOnly) {
  check({{u"\"Paris\"", "Paris", true},
         {u"\"Paris\"", "paris", false},
         {u"\"Paris\"", "I love Paris", false},
         {u"\"Paris\"", "Paris ", false},
         {u"\"Paris\"", "", false},
         {u"\"\"", "", true},
         {u"\"\"", "x", false}});
}

TEST(TextIgnoringCase, MatchesLettersOfEitherCase) {
  check({{u"\"Paris\"c", "pARIS", true},
         {u"\"Paris\"c", "I love Paris", false},
         {u"\"ÉCOLE\"c", "école", true},
         {u"\"ÉCOLE\"c", "ecole", false},
         {u"\"straße\"c", "STRASSE", true},
         {u"\"ΣΊΣΥΦΟΣ\"c", "σίσυφος", true}});
}

TEST(TextIgnoringDiacritics, MatchesLettersWithAndWithoutMarks) {
  check({{u"\"Ecole\"d", "École", true},
         {u"\"École\"d", "Ecole", true},
         {u"\"École\"d", "école", false},
         {u"\"ecole\"cd", "ÉCOLE", true},
         {u"\"naive cafe\"d", "naïve café", true}});
}

TEST(ComposedAndDecomposedText, IsTheSame) {
  check({{u"\"caf\u00e9\"", "cafe\xCC\x81", true},
         {u"\"cafe\u0301\"", "caf\xC3\xA9", true},
         {u"\"cafe\"", "cafe\xCC\x81", false},
         {u"\"caf?\"", "cafe\xCC\x81", true}});
}

TEST(Wildcards, StandForAnyRunAndForOneCharacter) {
  check({{u"\"paris*\"", "paris in spring", true},
         {u"\"paris*\"", "paris", true},
         {u"\"paris*\"", "in paris", false},
         {u"\"*paris\"", "in paris", true},
         {u"\"*paris\"", "paris in", false},
         {u"\"*paris*\"", "in paris today", true},
         {u"\"*paris*\"", "in Paris today", false},
         {u"\"*paris*\"c", "in Paris today", true},
         {u"\"p?ris\"", "paris", true},
         {u"\"p?ris\"", "pris", false},
         {u"\"p?ris\"", "p\xF0\x9F\x8D\x8Eris", true},
         {u"\"*a*b*c*\"", "xxaxxbxxcxx", true},
         {u"\"*a*b*c*\"", "xxaxxcxxbxx", false},
         {u"\"*\"", "", true},
         {u"\"?\"", "", false},
         {u"\"a**b\"", "ab", true},
         {u"\"**\"", "", true},
         {u"\"a**?b\"", "ab", false}});
}

// Text of ASCII alone is compared in a way of its own: with a letter beyond it on both sides, it is compared
// in the general one.
TEST(Wildcards, MeanTheSameInAsciiTextAndInOther) {
  std::mt19937 random(3);
  const auto textOf = [&random](const std::string& letters, size_t most) {
    std::string text;
    for (size_t length = random() % (most + 1); length > 0; --length)
      text += letters[random() % letters.size()];
    return text;
  };
  int matching = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::string pattern = textOf("abA?*", 6), text = textOf("abB", 9);
    for (const char* const modifiers : {"", "c", "d"}) {
      const std::u16string quoted = u'"' + std::u16string(pattern.begin(), pattern.end()) + u'"';
      const std::u16string longer = u'"' + std::u16string(pattern.begin(), pattern.end()) + u"\u00e9\"";
      const std::u16string how(modifiers, modifiers + std::strlen(modifiers));
      const bool matches = matchesValue(quoted + how, text);
      ASSERT_EQ(matches, matchesValue(longer + how, text + "\xC3\xA9")) << pattern << " with " << text;
      matching += matches;
    }
  }
  EXPECT_GT(matching, 1000);
}

TEST(Wildcards, AreOrdinaryCharactersWhenEscaped) {
  check({{uR"("5 \* 5")", "5 * 5", true},
         {uR"("5 \* 5")", "5 + 5", false},
         {uR"("why\?")", "why?", true},
         {uR"("why\?")", "whyx", false},
         {uR"("*\*")", "ends in *", true},
         {uR"("*\*")", "ends in x", false}});
}

TEST(WholeWords, EndAtNonLettersAndWhereLowerCaseMeetsUpperCase) {
  check({{u"\"Paris\"wc", "I love Paris", true},
         {u"\"Paris\"wc", "paris-france.jpg", true},
         {u"\"Paris\"wc", "Comparison", false},
         {u"\"Paris\"wc", "PARIS", true},
         {u"\"Window\"w", "MyWindowClass", true},
         {u"\"Window\"w", "NSWindow", false},
         {u"\"window\"w", "MyWindowClass", false},
         {u"\"window\"wc", "MyWindowClass", true},
         {u"\"Window\"w", "Window2", true},
         {u"\"New York\"w", "in New York now", true},
         {u"\"New York\"w", "in New Yorker", false},
         {u"\"Win*\"w", "MyWindowClass", true},
         {u"\"Win*\"w", "Twinset", false},
         {u"\"cafe\"wd", "le café noir", true},
         {u"\"cafe\"wd", "cafés", false},
         {u"\"y\"w", "x\xCC\x8Cy", false},  // no composed form: the mark stays, and is no border
         {u"\"Y\"w", "x\xCC\x8CY", true},
         {u"\"Paris\"w", "", false}});
}

TEST(Text, IsReadThroughPercentSignsWhereItIsNoUtf8) {
  check({{u"\"a%FFb\"",
          "a\xFF"
          "b",
          true},
         {u"\"*%C3\"", "x\xC3", true},
         {u"\"%ED%A0%80\"", "\xED\xA0\x80", true},
         {u"\"a?b\"",
          "a\xFF"
          "b",
          false}});
}

TEST(AQuestionMark, StandsForOneCharacterWhateverThatFoldsTo) {
  check({{u"\"stra?e.txt\"", "straße.txt", true},
         {u"\"stra?e.txt\"c", "straße.txt", true},
         {u"\"STRA?E.TXT\"cd", "straße.txt", true},
         {u"\"stra??e.txt\"c", "straße.txt", false},
         {u"\"stra??e.txt\"c", "STRASSE.TXT", true},
         {u"\"o?ice\"c", "oﬃce", false},
         {u"\"o?ce\"c", "oﬃce", true},  // one ligature of three letters
         {u"\"?\"c", "ß", true},
         {u"\"s?\"c", "ß", false},
         {u"\"*s\"c", "ß", true},
         {u"\"*?s\"c", "ß", false},
         {u"\"*?ss\"c", "ßß", true},
         {u"\"in der stra?e\"wc", "in der straße gehen", true},
         {u"\"x?y\"", "x\xCC\x8Cy", true},  // no composed form: the mark is a character
         {u"\"x?y\"d", "x\xCC\x8Cy", true},
         {u"\"xy\"d", "x\xCC\x8Cy", true},
         {u"\"?y\"d", "x\xCC\x8Cy", true},
         {u"\"x??y\"d", "x\xCC\x8Cy", false}});
}

std::string utf8(std::u32string_view text) {
  std::string bytes;
  for (const char32_t character : text) {
    uint8_t buffer[U8_MAX_LENGTH];
    int32_t length = 0;
    U8_APPEND_UNSAFE(buffer, length, static_cast<UChar32>(character));
    bytes.append(buffer, buffer + length);
  }
  return bytes;
}

TEST(ALooserComparison, NeverFindsLess) {
  constexpr std::u32string_view kCharacters = U"sSß\u1E9Eﬀﬁfieé\u0301\u030Cİ -";
  std::mt19937 random(20110305);
  const auto below = [&](size_t bound) { return random() % bound; };
  int found = 0;
  for (int round = 0; round < 20000; ++round) {
    std::u32string text;
    std::vector<PatternElement> elements;
    for (size_t i = below(6); i > 0; --i) text += kCharacters[below(kCharacters.size())];
    for (const char32_t character : text) {  // a pattern that is near the text
      if (below(8) == 0) continue;
      const auto kind = static_cast<PatternElement::Kind>(below(3));
      elements.push_back({kind, kind == PatternElement::Literal ? character : U'\0'});
    }
    const std::string bytes = utf8(text);
    bool matches[8];
    for (unsigned bits = 0; bits < 8; ++bits) {
      const TextOptions options{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
      matches[bits] = TextPattern(elements, options).matches(bytes);
      for (unsigned stricter = 0; stricter < bits; ++stricter) {
        if ((stricter & bits) != stricter || !matches[stricter]) continue;
        ASSERT_TRUE(matches[bits]) << "round " << round << ", options " << bits << ": " << bytes;
      }
    }
    found += matches[0];
  }
  EXPECT_GT(found, 2000);
  EXPECT_LT(found, 18000);
}

TEST(Wildcards, TakeNoLongerThanPatternTimesText) {
  std::u16string stars = u"\"";
  for (int i = 0; i < 60; ++i) stars += u"*a";
  EXPECT_FALSE(matchesValue(stars + u"b\"", std::string(20000, 'a')));
  EXPECT_FALSE(matchesValue(stars + u"b\"w", std::string(20000, 'a')));
  std::u16string ones = u"\"";
  for (int i = 0; i < 60; ++i) ones += u"*?s";
  std::string sharp;
  for (int i = 0; i < 20000; ++i) sharp += "ß";
  EXPECT_FALSE(matchesValue(ones + u"b\"c", sharp));
}

}  // namespace
}  // namespace standin::metadata
