#include "standin/coreservices/language/parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
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

TEST(QueryString, ReadsTimesWithAndWithoutQuotes) {
  for (const auto* text :
       {u"k == $time.today(-1)", u"k == \"$time.today(-1)\"", u"k=='$time.today(-1)'",
        u"k > $time.yesterday&&j == 1", u"k ==[c] $time.yesterday", u"k == $time.yesterday c",
        u"InRange(k, 1, $time.today( -1 ))", u"InRange(k, 1, '$time.yesterday')"}) {
    const auto result = parseQuery(text);
    const Expression& expression = parsed(result);
    const Comparison& comparison =
        expression.parts.empty() ? expression.comparison : expression.parts[0]->comparison;
    const bool isRange = comparison.op == Operator::InRange;
    const auto& time = (isRange ? comparison.highest : comparison.value).relativeTime;
    ASSERT_TRUE(time);
    EXPECT_EQ(time->unit, TimeUnit::Day);
    EXPECT_EQ(time->distance, -1);
  }
  EXPECT_EQ(comparisonOf(u"k == $time.iso(2011-03-05T12:00:00Z)").value.number, Number(321019200.0));
  EXPECT_EQ(comparisonOf(u"k < \"$time.iso(2011-03-05T12:00:00Z)\"").value.number, Number(321019200.0));
}

TEST(QueryString, TakesDatesAloneUnderTheKeysOfDates) {
  for (const auto* text :
       {u"kMDItemDueDate == 2011-03-05T12:00:00Z", u"kMDItemDueDate <= '2011-03-05T12:00:00Z'",
        u"InRange(kMDItemDownloadedDate, 2011-03-05T12:00:00Z, 2012-01-01)"}) {
    EXPECT_EQ(comparisonOf(text).value.number, Number(321019200.0));
  }
  EXPECT_EQ(comparisonOf(u"InRange(kMDItemDueDate, 0, 2011-03-05T12:00:00Z)").highest.number,
            Number(321019200.0));
  for (const auto* text : {u"k == 2011-03-05", u"* == 2011-03-05", u"kMDItemTitle == 2011-03-05",
                           u"kMDItemFSSize == 2011-03-05", u"kMDItemDueDate == 2011-03-*",
                           u"kMDItemDueDate == 2011-02-30", u"kMDItemDueDate == 2011-03-05T12:00:00Zulu"}) {
    const Literal value = comparisonOf(text).value;
    EXPECT_FALSE(value.relativeTime || value.period || value.number);
  }
  EXPECT_TRUE(comparisonOf(u"kMDItemDueDate == 2011-03-05").value.text.matches("2011-03-05"));
  EXPECT_EQ(comparisonOf(u"kMDItemDueDate == 2011").value.number, Number(int64_t{2011}));
}

TEST(QueryString, KnowsWhereItsComparisonsAre) {
  const std::u16string text = u" ( kMDItemTextContent ==[c] 'a b' c ) && InRange( k , 1,2 ) || k=1";
  const auto result = parseQuery(text);
  std::vector<std::u16string> written;
  const std::function<void(const Expression&)> add = [&](const Expression& expression) {
    for (const ExpressionRef& part : expression.parts) add(*part);
    const Comparison& own = expression.comparison;
    if (expression.parts.empty()) written.push_back(text.substr(own.position, own.length));
  };
  add(parsed(result));
  std::ranges::sort(written);
  EXPECT_EQ(written, (std::vector<std::u16string>{u"InRange( k , 1,2 )", u"k=1",
                                                  u"kMDItemTextContent ==[c] 'a b' c"}));
}

TEST(QueryString, LeavesQuotedTextThatIsNoTimeAsText) {
  for (const auto* text : {u"k == \"$time.tomorrow\"", u"k == '$time.today '", u"k == \"\\$time.today\"",
                           u"k != '$time'", u"k == \"costs $5\""}) {
    const Literal value = comparisonOf(text).value;
    EXPECT_FALSE(value.relativeTime || value.period || value.number);
  }
  EXPECT_TRUE(comparisonOf(u"k == \"$time.tomorrow\"").value.text.matches("$time.tomorrow"));
  EXPECT_TRUE(comparisonOf(u"k == $time.today(-1)").value.text.matches("$time.today(-1)"));
}

TEST(QueryString, KeepsTimesRelativeUntilTheyAreResolved) {
  const auto result = parseQuery(u"a == 1 && (b > $time.now(-5) || c < 2)");
  const ExpressionRef expression = std::get<ExpressionRef>(result);
  const ExpressionRef resolved = resolve(expression, Date{1000});
  const auto timeIn = [](const ExpressionRef& whole) { return whole->parts[1]->parts[0]->comparison.value; };
  EXPECT_TRUE(timeIn(expression).relativeTime);
  EXPECT_EQ(timeIn(expression).number, std::nullopt);
  EXPECT_FALSE(timeIn(resolved).relativeTime);
  EXPECT_EQ(timeIn(resolved).number, Number(995.0));
  EXPECT_EQ(resolved->parts[0], expression->parts[0]);  // what has no times is shared
  EXPECT_EQ(resolve(resolved, Date{2000}), resolved);
}

TEST(QueryString, TakesTheTextContentByWholeWords) {
  EXPECT_TRUE(comparisonOf(u"kMDItemTextContent == \"Paris\"").value.text.matches("I love Paris"));
  EXPECT_FALSE(comparisonOf(u"kMDItemTitle == \"Paris\"").value.text.matches("I love Paris"));
  EXPECT_TRUE(comparisonOf(u"kMDItemTextContent == \"I \t love\"").value.text.matches("I love Paris"));
}

TEST(QueryString, ReadsTrueAndFalseInAnyCaseWithAndWithoutQuotes) {
  for (const auto* text : {u"k == true", u"k == TRUE", u"k == \"true\"", u"k == 'True'c", u"k ==[d] tRuE"}) {
    EXPECT_EQ(comparisonOf(text).value.truth, true);
  }
  for (const auto* text : {u"k == false", u"k == False", u"k == \"FALSE\"", u"k[w] == 'falsE'"}) {
    EXPECT_EQ(comparisonOf(text).value.truth, false);
  }
  for (const auto* text : {u"k == truth", u"k == \"true \"", u"k == fals?", u"k == \"\"", u"k == 1"}) {
    EXPECT_EQ(comparisonOf(text).value.truth, std::nullopt);
  }
  EXPECT_TRUE(comparisonOf(u"k == \"True\"").value.text.matches("True"));
  EXPECT_FALSE(comparisonOf(u"k == \"True\"").value.text.matches("true"));
}

TEST(QueryString, ReadsTrueAndFalseUnderAStarAsBareWordsOnly) {
  EXPECT_EQ(comparisonOf(u"* == True").value.truth, true);
  EXPECT_EQ(comparisonOf(u"* == \"true\"").value.truth, std::nullopt);
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
      {u"k < true", 4, "number or a date"},
      {u"k > \"FALSE\"", 4, "number or a date"},
      {u"InRange(k, 1)", 12, "expected ,"},
      {u"InRange(k, a, 2)", 11, "number or a date"},
      {u"InRange(k, 1, 2", 15, "expected )"},
      {u"1k == 2", 0, "name of an attribute"},
      {u"k == a,b", 6, "&&"},
      {u"k === 1", 4, "expected a value"},
      {u"k == 1 && # == 2", 10, "name of an attribute"},
      {u"k == \"a\" j == 2", 9, "expected && or ||"},
      {u"k == \"a\" cj == 2", 9, "modifiers"},
      {u"k ==[c 1", 7, "or ]"},
      {u"k[c == 1", 4, "or ]"},
      {u"k[c] c == 1", 5, "expected one of =="},
      {u"k == 'open\"", 5, "quote is never closed"},
      {u"k == a\"b\"", 6, "&&"},
      {u"k == (1)", 5, "special characters in quotes"},
      {u"k == \\x", 5, "special characters in quotes"},
      {u"k == 1 || || j == 2", 10, "name of an attribute"},
      {u"k == 1 | j == 2", 7, "&&"},
      {u"(k == 1 j == 2)", 8, "or )"},
      {u"!(k == 1", 1, "never closed"},
      {u"!!(k == 1)", 1, "expected ("},
      {u"* != 1", 2, "== only"},
      {u"* < 1", 2, "== only"},
      {u"InRange(*, 1, 2)", 8, "== only"},
      {u"InRange(k 1, 2)", 10, "expected ,"},
      {u"InRange(k, 1 2)", 13, "expected ,"},
      {u"InRange(k, 1, 2, 3)", 15, "expected )"},
      {u"InRange(, 1, 2)", 8, "name of an attribute"},
      {u"k > 'abc'", 4, "number or a date"},
      {u"k > 1e999", 4, "out of range"},
      {u"k > \"1e999\"", 4, "out of range"},
      {u"InRange(k, 1, 1e-999)", 14, "out of range"},
      {u"k == $", 5, "expected $time"},
      {u"k == $size", 5, "expected $time"},
      {u"k == $time.tomorrow", 11, "expected now, today"},
      {u"k == $time.today(x)", 17, "whole number"},
      {u"k == $time.today(1", 16, "never closed"},
      {u"k == $time.todayx", 11, "expected now, today"},
      {u"k == $time.today z", 17, "&&"},
      {u"k == $time.today(1)(2)", 19, "&&"},
      {u"k < $time.now(99999999999999999999)", 14, "10,000 years"},
      {u"k > \"$time.tomorrow\"", 11, "expected now, today"},
      {u"k > \"$time.today(1\"", 16, "never closed"},
      {u"k > '$time.today!'", 4, "number or a date"},
      {u"InRange(k, $time.today, '$time.iso(2011-02-30)')", 43, "no such day"},
      {u"k >= $time.iso(2011-02-30)", 23, "no such day"},
      {u"kMDItemDueDate > 2011-02-30", 25, "no such day"},
      {u"kMDItemDueDate > '2011-02-30'", 26, "no such day"},
      {u"kMDItemDueDate > 2011-03-05T12:00:00Zulu", 37, "end here"},
      {u"InRange(kMDItemDueDate, 1, 2011-3-5)", 33, "month from 01"},
      {u"kMDItemDueDate > 1e999", 17, "out of range"},
      {u"kMDItemDueDate > x", 17, "number or a date"},
      {u"k > 2011-03-05", 4, "number or a date"},
      {u"\xD83C\xDF4E == 1", 0, "name of an attribute"},
      {u"k == \"\xD83C\xDF4E\" && (", 14, "name of an attribute"},
  };
  for (const Malformed& row : kRows) {
    const std::u16string text = row.text;
    const std::string shown(text.begin(), text.end());
    const auto result = parseQuery(text);
    const auto* const error = std::get_if<ParseError>(&result);
    ASSERT_TRUE(error) << shown;
    EXPECT_EQ(error->position, row.position) << shown << ": " << error->reason;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, row.reason, error->reason) << shown;
  }
}

TEST(QueryString, IsRefusedWhenItNestsTooDeeplyInsteadOfEndingTheProcess) {
  const std::u16string text = std::u16string(100000, u'(') + u"k == 1" + std::u16string(100000, u')');
  EXPECT_TRUE(std::holds_alternative<ParseError>(parseQuery(text)));
  const auto nested = [](size_t depth, std::u16string opening) {
    std::u16string whole;
    for (size_t i = 0; i < depth; ++i) whole += opening;
    return whole + u"k == 1" + std::u16string(depth, u')');
  };
  EXPECT_EQ(shapeOf(nested(200, u"(")), "k");
  EXPECT_EQ(shapeOf(nested(200, u"!(")), std::string(200, '!') + "k");
  for (const auto& [opening, position] : {std::pair(u"(", 200u), std::pair(u"!(", 401u)}) {
    const auto result = parseQuery(nested(201, opening));
    const auto* const error = std::get_if<ParseError>(&result);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->position, position);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "too deeply", error->reason);
  }
}

}  // namespace
}  // namespace standin::metadata
