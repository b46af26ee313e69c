#include "standin/coreservices/query_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace standin::metadata {
namespace {

const Expression& parsed(const std::variant<ExpressionRef, ParseError>& result) {
  if (const auto* error = std::get_if<ParseError>(&result)) {
    throw std::runtime_error(std::to_string(error->position) + ": " + error->reason);
  }
  return *std::get<ExpressionRef>(result);
}

// The tree in a form that can be read: every comparison by its key, with the operators between them.
std::string shape(const Expression& expression) {
  const auto join = [&](const char* sign) {
    std::string text = "(";
    for (const ExpressionRef& part : expression.parts) {
      if (text.size() > 1) text += sign;
      text += shape(*part);
    }
    return text + ")";
  };
  switch (expression.kind) {
    case Expression::Kind::Comparison:
      return expression.comparison.key.any ? "*" : expression.comparison.key.name;
    case Expression::Kind::And:
      return join("&&");
    case Expression::Kind::Or:
      return join("||");
    case Expression::Kind::Not:
      return "!" + shape(*expression.parts[0]);
  }
  return "?";
}

std::string shapeOf(std::u16string_view text) {
  const auto result = parseQuery(text);
  return shape(parsed(result));
}

Comparison comparisonOf(std::u16string_view text) {
  const auto result = parseQuery(text);
  return parsed(result).comparison;
}

TEST(QueryString, HasSevenOperators) {
  const std::pair<const char16_t*, Operator> kRows[] = {
      {u"k == 1", Operator::Equal},         {u"k = 1", Operator::Equal},   {u"k != 1", Operator::NotEqual},
      {u"k < 1", Operator::Less},           {u"k > 1", Operator::Greater}, {u"k <= 1", Operator::LessOrEqual},
      {u"k >= 1", Operator::GreaterOrEqual}};
  for (const auto& [text, op] : kRows) EXPECT_EQ(comparisonOf(text).op, op) << std::string(text, text + 6);
}

TEST(QueryString, NeedsNoBlanks) {
  EXPECT_EQ(shapeOf(u"a==1&&b!=2||c>=3"), "((a&&b)||c)");
  EXPECT_EQ(shapeOf(u"  a\t==\n1  &&  b == \"x\"  "), "(a&&b)");
}

TEST(QueryString, AndBindsTighterThanOr) {
  EXPECT_EQ(shapeOf(u"a == 1 || b == 2 && c == 3"), "(a||(b&&c))");
  EXPECT_EQ(shapeOf(u"(a == 1 || b == 2) && c == 3"), "((a||b)&&c)");
}

TEST(QueryString, MayNegateParentheses) {
  EXPECT_EQ(shapeOf(u"!(a == 1) && !( b == 2 || c == 3 )"), "(!a&&!(b||c))");
}

TEST(QueryString, TakesInRangeInAnyCase) {
  for (const auto* text : {u"InRange(size, 1, 2)", u"inrange(size,1,2)", u"INRANGE ( size , 1 , 2 )"}) {
    const Comparison range = comparisonOf(text);
    EXPECT_EQ(range.op, Operator::InRange);
    EXPECT_EQ(range.key.name, "size");
    EXPECT_EQ(range.value.number, Number(int64_t{1}));
    EXPECT_EQ(range.highest.number, Number(int64_t{2}));
  }
}

TEST(QueryString, TakesInRangeAsAKeyWhereNoParenthesisFollows) {
  EXPECT_EQ(comparisonOf(u"InRange == 1").op, Operator::Equal);
}

TEST(QueryString, ReadsNumbersWithAndWithoutQuotes) {
  EXPECT_EQ(comparisonOf(u"k == 12").value.number, Number(int64_t{12}));
  EXPECT_EQ(comparisonOf(u"k == -12").value.number, Number(int64_t{-12}));
  EXPECT_EQ(comparisonOf(u"k == +12").value.number, Number(int64_t{12}));
  EXPECT_EQ(comparisonOf(u"k == \"12\"").value.number, Number(int64_t{12}));
  EXPECT_EQ(comparisonOf(u"k == 1.5e3").value.number, Number(1500.0));
  EXPECT_EQ(comparisonOf(u"k == 9007199254740993").value.number, Number(int64_t{9007199254740993}));
  EXPECT_EQ(comparisonOf(u"k == 12a").value.number, std::nullopt);
  EXPECT_EQ(comparisonOf(u"k == infinity").value.number, std::nullopt);
  EXPECT_EQ(comparisonOf(u"k == nan").value.number, std::nullopt);
}

TEST(QueryString, ReadsTrueAndFalseAsBareWordsOnly) {
  EXPECT_EQ(comparisonOf(u"k == true").value.truth, true);
  EXPECT_EQ(comparisonOf(u"k == false").value.truth, false);
  EXPECT_EQ(comparisonOf(u"k == \"true\"").value.truth, std::nullopt);
}

TEST(QueryString, TakesTextInEitherKindOfQuotesOrAsABareWord) {
  EXPECT_TRUE(comparisonOf(u"k == \"it's\"").value.text.matches("it's"));
  EXPECT_TRUE(comparisonOf(u"k == 'say \"so\"'").value.text.matches("say \"so\""));
  EXPECT_TRUE(comparisonOf(u"k == Paris").value.text.matches("Paris"));
  EXPECT_TRUE(comparisonOf(u"k == *.txt").value.text.matches("notes.txt"));
}

TEST(QueryString, TakesTheCharacterAfterABackslashAsItIs) {
  const TextPattern text = comparisonOf(uR"(k == "a\"b\*c\\d\?")").value.text;
  EXPECT_TRUE(text.matches(R"(a"b*c\d?)"));
  EXPECT_FALSE(text.matches(R"(a"bxc\d?)"));
  EXPECT_FALSE(text.matches(R"(a"b*c\dx)"));
}

TEST(QueryString, TakesModifiersInEveryPlace) {
  for (const auto* text :
       {u"k == \"STRASSE\"cd", u"k == \"STRASSE\" cd", u"k ==[cd] \"STRASSE\"", u"k[cd] == \"STRASSE\"",
        u"k [dc] = 'STRASSE'", u"k[c] ==[d] \"STRASSE\"", u"k[c] == \"STRASSE\"d", u"k ==[cd]\"STRASSE\""}) {
    const TextPattern pattern = comparisonOf(text).value.text;
    EXPECT_TRUE(pattern.matches("straße"));
    EXPECT_TRUE(pattern.matches("Strässe"));
  }
  EXPECT_TRUE(comparisonOf(u"k == \"paris\"w").value.text.matches("in paris"));
}

TEST(QueryString, GoesOnAfterTrailingModifiers) {
  EXPECT_EQ(shapeOf(u"(a == \"x\"c)&&b == \"y\" d || c == \"z\"cdw"), "((a&&b)||c)");
}

TEST(QueryString, TakesAStarForAnyKeyWithEqualityOnly) {
  EXPECT_TRUE(comparisonOf(u"* == \"x\"cd").key.any);
  EXPECT_TRUE(std::holds_alternative<ParseError>(parseQuery(u"* != \"x\"")));
  EXPECT_TRUE(std::holds_alternative<ParseError>(parseQuery(u"* > 5")));
  EXPECT_TRUE(std::holds_alternative<ParseError>(parseQuery(u"InRange(*, 1, 2)")));
}

struct Malformed {
  const char16_t* text;
  size_t position;
  const char* reason;
};

TEST(QueryString, IsRefusedWithThePlaceAndTheReasonWhenMalformed) {
  const Malformed kRows[] = {
      {u"", 0, "empty"},
      {u"   ", 3, "empty"},
      {u"Paris", 5, "expected one of =="},
      {u"== 1", 0, "name of an attribute"},
      {u"k ==", 4, "expected a value"},
      {u"k == \"open", 5, "quote is never closed"},
      {u"k == \"open\\", 5, "quote is never closed"},
      {u"k == \"x\"z", 8, "modifiers"},
      {u"k == \"x\"C", 8, "modifiers"},
      {u"k == \"x\"cdx", 8, "modifiers"},
      {u"k ==[x] 1", 5, "modifiers"},
      {u"k == 1 &&", 9, "name of an attribute"},
      {u"k == 1 & j == 2", 7, "&&"},
      {u"k == 1 j == 2", 7, "&&"},
      {u"(k == 1", 0, "never closed"},
      {u"((k == 1)", 0, "never closed"},
      {u"k == 1)", 6, "never opened"},
      {u"()", 1, "name of an attribute"},
      {u"! k == 1", 2, "expected ("},
      {u"k => 1", 3, "expected a value"},
      {u"k < abc", 4, "number or a date"},
      {u"k >= \"*\"", 5, "number or a date"},
      {u"InRange(k, 1)", 12, "expected ,"},
      {u"InRange(k, a, 2)", 11, "number or a date"},
      {u"InRange(k, 1, 2", 15, "expected )"},
      {u"1k == 2", 0, "name of an attribute"},
      {u"k == a,b", 6, "&&"},
      {u"k === 1", 4, "expected a value"},
  };
  for (const Malformed& row : kRows) {
    const std::u16string text = row.text;
    const std::string shown(text.begin(), text.end());
    const auto result = parseQuery(text);
    const auto* const error = std::get_if<ParseError>(&result);
    ASSERT_TRUE(error) << shown;
    EXPECT_EQ(error->position, row.position) << shown << ": " << error->reason;
    EXPECT_THAT(error->reason, testing::HasSubstr(row.reason)) << shown;
  }
}

TEST(QueryString, IsRefusedWhenItNestsTooDeeplyInsteadOfEndingTheProcess) {
  const std::u16string text = std::u16string(100000, u'(') + u"k == 1" + std::u16string(100000, u')');
  EXPECT_TRUE(std::holds_alternative<ParseError>(parseQuery(text)));
  EXPECT_EQ(shapeOf(std::u16string(150, u'(') + u"k == 1" + std::u16string(150, u')')), "k");
}

}  // namespace
}  // namespace standin::metadata
