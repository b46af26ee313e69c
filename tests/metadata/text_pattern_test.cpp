#include "standin/coreservices/text_pattern.h"

#include <gtest/gtest.h>

#include <string>

#include "standin/coreservices/query_parser.h"

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

TEST(Wildcards, TakeNoLongerThanPatternTimesText) {
  std::u16string stars = u"\"";
  for (int i = 0; i < 60; ++i) stars += u"*a";
  EXPECT_FALSE(matchesValue(stars + u"b\"", std::string(20000, 'a')));
  EXPECT_FALSE(matchesValue(stars + u"b\"w", std::string(20000, 'a')));
}

}  // namespace
}  // namespace standin::metadata
