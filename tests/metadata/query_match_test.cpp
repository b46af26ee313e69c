#include "standin/coreservices/query_match.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

#include "standin/coreservices/query_parser.h"

namespace standin::metadata {
namespace {

class Attributes : public AttributeSource {
 public:
  explicit Attributes(std::map<std::string, std::vector<Value>> attributes)
      : attributes_(std::move(attributes)) {}

  void values(const AttributeKey& key, std::vector<Value>& values) override {
    for (const auto& [name, own] : attributes_) {
      if (key.any || key.name == name) values.insert(values.end(), own.begin(), own.end());
    }
  }

 private:
  std::map<std::string, std::vector<Value>> attributes_;
};

const char* const kText = "text";

bool finds(std::u16string_view query) {
  Attributes attributes({{"size", {int64_t{1000}}},
                         {"ratio", {1.5}},
                         {"huge", {int64_t{9007199254740993}}},
                         {"hidden", {false}},
                         {"shown", {true}},
                         {"born", {Date{321019200.5}}},
                         {"title", {std::string_view(kText)}},
                         {"year", {std::string_view("2011")}},
                         {"authors", {std::string_view("Ann"), std::string_view("Bob")}},
                         {"empty", {}}});
  const auto result = parseQuery(query);
  if (const auto* error = std::get_if<ParseError>(&result)) throw std::runtime_error(error->reason);
  return matches(*std::get<ExpressionRef>(result), attributes);
}

TEST(Numbers, AreComparedByValue) {
  EXPECT_TRUE(finds(u"size == 1000"));
  EXPECT_TRUE(finds(u"size == 1000.0"));
  EXPECT_TRUE(finds(u"size == \"1000\""));
  EXPECT_FALSE(finds(u"size == 1001"));
  EXPECT_TRUE(finds(u"size != 1001"));
  EXPECT_FALSE(finds(u"size != 1000"));
  EXPECT_TRUE(finds(u"size < 1001"));
  EXPECT_FALSE(finds(u"size < 1000"));
  EXPECT_TRUE(finds(u"size <= 1000"));
  EXPECT_TRUE(finds(u"size > 999.5"));
  EXPECT_FALSE(finds(u"size > 1000"));
  EXPECT_TRUE(finds(u"size >= 1000"));
  EXPECT_FALSE(finds(u"size >= 1001"));
  EXPECT_TRUE(finds(u"ratio == 1.5"));
  EXPECT_TRUE(finds(u"ratio > 1"));
}

TEST(Numbers, AreExactBeyondWhatADoubleHolds) {
  EXPECT_TRUE(finds(u"huge == 9007199254740993"));
  EXPECT_FALSE(finds(u"huge == 9007199254740992"));
  EXPECT_TRUE(finds(u"huge > 9007199254740992"));
}

TEST(Ranges, IncludeBothBounds) {
  EXPECT_TRUE(finds(u"InRange(size, 1000, 2000)"));
  EXPECT_TRUE(finds(u"InRange(size, 0, 1000)"));
  EXPECT_FALSE(finds(u"InRange(size, 1001, 2000)"));
  EXPECT_FALSE(finds(u"InRange(size, 0, 999)"));
  EXPECT_FALSE(finds(u"InRange(size, 2000, 0)"));
}

TEST(Dates, AreSecondsSince2001) {
  EXPECT_TRUE(finds(u"born > 321019200"));
  EXPECT_TRUE(finds(u"born < 321019201"));
  EXPECT_TRUE(finds(u"InRange(born, 321019200, 321019201)"));
  EXPECT_FALSE(finds(u"born < 0"));
}

TEST(Booleans, AreTrueFalseOrNumbers) {
  EXPECT_TRUE(finds(u"shown == true"));
  EXPECT_TRUE(finds(u"shown == 1"));
  EXPECT_FALSE(finds(u"shown == false"));
  EXPECT_TRUE(finds(u"hidden == 0"));
  EXPECT_TRUE(finds(u"hidden != true"));
}

TEST(Text, IsComparedWithNumbersAsWritten) {
  EXPECT_TRUE(finds(u"year == 2011"));
  EXPECT_FALSE(finds(u"year == 2011.0"));
  EXPECT_FALSE(finds(u"year > 2010"));
}

TEST(AValueOfAnotherType, IsUnequal) {
  EXPECT_FALSE(finds(u"size == \"big\""));
  EXPECT_TRUE(finds(u"size != \"big\""));
  EXPECT_FALSE(finds(u"title > 5"));
}

TEST(AnAttributeOfManyValues, MatchesWhenAnyOfThemDoes) {
  EXPECT_TRUE(finds(u"authors == \"Bob\""));
  EXPECT_TRUE(finds(u"authors == \"Ann\""));
  EXPECT_FALSE(finds(u"authors == \"Cid\""));
  EXPECT_TRUE(finds(u"authors != \"Bob\""));
}

TEST(AMissingAttribute, MatchesNoComparisonButUnequal) {
  for (const auto* query : {u"none == \"*\"", u"none == 0", u"none < 1", u"none > 1", u"none <= 1",
                            u"none >= 1", u"InRange(none, 0, 1)", u"none == false", u"empty == \"*\""}) {
    const std::u16string text = query;
    EXPECT_FALSE(finds(text)) << std::string(text.begin(), text.end());
  }
  EXPECT_TRUE(finds(u"none != \"x\""));
  EXPECT_TRUE(finds(u"empty != 0"));
}

TEST(ALoneStar, MatchesAnyValueThatIsThere) {
  EXPECT_TRUE(finds(u"size == \"*\""));
  EXPECT_TRUE(finds(u"hidden == *"));
  EXPECT_FALSE(finds(u"size != \"*\""));
}

TEST(AStarAsKey, LooksAtEveryAttribute) {
  EXPECT_TRUE(finds(u"* == \"Bob\""));
  EXPECT_TRUE(finds(u"* == \"TEXT\"c"));
  EXPECT_TRUE(finds(u"* == 1000"));
  EXPECT_FALSE(finds(u"* == \"Cid\""));
  EXPECT_FALSE(finds(u"* == 1"));  // a flag that is set isn't the number
  EXPECT_TRUE(finds(u"* == true"));
}

TEST(Keys, AreCaseSensitive) {
  EXPECT_FALSE(finds(u"Size == 1000"));
}

TEST(Conditions, AreCombined) {
  EXPECT_TRUE(finds(u"size == 1000 && ratio == 1.5"));
  EXPECT_FALSE(finds(u"size == 1000 && ratio == 2"));
  EXPECT_TRUE(finds(u"size == 1 || ratio == 1.5"));
  EXPECT_FALSE(finds(u"size == 1 || ratio == 1"));
  EXPECT_TRUE(finds(u"size == 1000 || ratio == 1 && ratio == 2"));
  EXPECT_FALSE(finds(u"(size == 1000 || ratio == 1) && ratio == 2"));
  EXPECT_TRUE(finds(u"!(size == 1)"));
  EXPECT_FALSE(finds(u"!(size == 1000 || ratio == 1)"));
}

}  // namespace
}  // namespace standin::metadata
