#include "standin/coreservices/language/match.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

#include "standin/coreservices/language/parser.h"
#include "tests/support/local_zone.h"

namespace standin::metadata {
namespace {

class Attributes : public AttributeSource {
 public:
  explicit Attributes(std::map<std::string, std::vector<Value>> attributes)
      : attributes_(std::move(attributes)) {}

  bool values(const AttributeKey& key, std::vector<Value>& values) override {
    for (const auto& [name, own] : attributes_) {
      if (key.any || key.name == name) values.insert(values.end(), own.begin(), own.end());
    }
    return true;
  }

 private:
  std::map<std::string, std::vector<Value>> attributes_;
};

const char* const kText = "text";

constexpr double kNow = 321021296;  // 2011-03-05 12:34:56 GMT

bool finds(std::u16string_view query) {
  const LocalZone zone("GMT0");
  Attributes attributes({{"size", {int64_t{1000}}},
                         {"ratio", {1.5}},
                         {"huge", {int64_t{9007199254740993}}},
                         {"hidden", {false}},
                         {"shown", {true}},
                         {"born", {Date{321019200.5}}},
                         {"midnight", {Date{320976000}}},
                         {"dollar", {std::string_view("$time.today")}},
                         {"years", {int64_t{1999}, int64_t{2011}}},
                         {"title", {std::string_view(kText)}},
                         {"year", {std::string_view("2011")}},
                         {"answer", {std::string_view("True")}},
                         {"authors", {std::string_view("Ann"), std::string_view("Bob")}},
                         {"empty", {}}});
  const auto result = parseQuery(query);
  if (const auto* error = std::get_if<ParseError>(&result)) throw std::runtime_error(error->reason);
  return match(*resolve(std::get<ExpressionRef>(result), Date{kNow}), attributes) == Match::Yes;
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
  EXPECT_TRUE(finds(u"huge > 9007199254740992.0"));
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

// `born` is 2011-03-05 12:00:00.5 GMT.
TEST(Periods, EqualWhatLiesWithinThem) {
  EXPECT_TRUE(finds(u"born == $time.today"));
  EXPECT_TRUE(finds(u"born == \"$time.today\""));
  EXPECT_TRUE(finds(u"born = $time.this_week"));
  EXPECT_TRUE(finds(u"born == $time.iso(2011-03-05)"));
  EXPECT_TRUE(finds(u"* == $time.today"));
  EXPECT_FALSE(finds(u"born == $time.yesterday"));
  EXPECT_FALSE(finds(u"born == $time.today(1)"));
  EXPECT_FALSE(finds(u"born != $time.today"));
  EXPECT_TRUE(finds(u"born != $time.yesterday"));
  EXPECT_TRUE(finds(u"none != $time.today"));
  EXPECT_FALSE(finds(u"none == $time.today"));
  EXPECT_TRUE(finds(u"midnight == $time.today"));
  EXPECT_FALSE(finds(u"midnight == $time.yesterday"));
}

TEST(Periods, AreOrderedByTheirStart) {
  EXPECT_TRUE(finds(u"born > $time.today"));
  EXPECT_TRUE(finds(u"born >= $time.today"));
  EXPECT_FALSE(finds(u"born < $time.today"));
  EXPECT_FALSE(finds(u"born <= $time.today"));
  EXPECT_TRUE(finds(u"born < $time.today(1)"));
  EXPECT_TRUE(finds(u"born > $time.this_year"));
  EXPECT_FALSE(finds(u"midnight > $time.today"));
  EXPECT_TRUE(finds(u"midnight >= $time.today"));
  EXPECT_TRUE(finds(u"midnight <= $time.today"));
  EXPECT_FALSE(finds(u"midnight < $time.today"));
}

TEST(Periods, BoundRangesByTheirStart) {
  EXPECT_TRUE(finds(u"InRange(born, $time.today, $time.today(+1))"));
  EXPECT_TRUE(finds(u"InRange(born, '$time.this_week(-1)', 321019201)"));
  EXPECT_FALSE(finds(u"InRange(born, $time.yesterday, $time.today)"));
  EXPECT_TRUE(finds(u"InRange(midnight, $time.yesterday, $time.today)"));
}

TEST(Instants, EqualThemselvesOnly) {
  EXPECT_TRUE(finds(u"born == $time.iso(2011-03-05T12:00:00.5Z)"));
  EXPECT_TRUE(finds(u"born == 321019200.5"));
  EXPECT_FALSE(finds(u"born == $time.iso(2011-03-05T12:00:00Z)"));
  EXPECT_TRUE(finds(u"born != $time.iso(2011-03-05T12:00:00Z)"));
  EXPECT_TRUE(finds(u"midnight == $time.now(-45296)"));
  EXPECT_FALSE(finds(u"born == $time.now(-2096)"));
  EXPECT_TRUE(finds(u"born > $time.now(-2096)"));
  EXPECT_TRUE(finds(u"born < $time.now(-2095)"));
}

TEST(Times, AreComparedWithNumbersAsSecondsAndWithTextAsWritten) {
  EXPECT_TRUE(finds(u"size < $time.today"));
  EXPECT_FALSE(finds(u"title == $time.today"));
  EXPECT_TRUE(finds(u"dollar == $time.today"));
  EXPECT_FALSE(finds(u"shown == $time.today"));
}

TEST(Booleans, AreTrueFalseOrNumbers) {
  EXPECT_TRUE(finds(u"shown == true"));
  EXPECT_TRUE(finds(u"shown == 1"));
  EXPECT_FALSE(finds(u"shown == false"));
  EXPECT_TRUE(finds(u"hidden == 0"));
  EXPECT_TRUE(finds(u"hidden != true"));
  EXPECT_TRUE(finds(u"hidden == FALSE"));
  EXPECT_TRUE(finds(u"hidden == \"false\""));
  EXPECT_TRUE(finds(u"shown == 'True'"));
  EXPECT_TRUE(finds(u"shown == \"1\""));
  EXPECT_FALSE(finds(u"shown != \"TRUE\""));
  EXPECT_FALSE(finds(u"title == false"));
  EXPECT_FALSE(finds(u"size == \"true\""));
}

TEST(TrueAndFalse, AreTextToText) {
  EXPECT_TRUE(finds(u"answer == \"True\""));
  EXPECT_TRUE(finds(u"answer == True"));
  EXPECT_FALSE(finds(u"answer == true"));
  EXPECT_TRUE(finds(u"answer == \"true\"c"));
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
  EXPECT_TRUE(finds(u"years < 2000"));
  EXPECT_TRUE(finds(u"years > 2000"));
  EXPECT_TRUE(finds(u"years < 2000 && years > 2000"));
  EXPECT_FALSE(finds(u"InRange(years, 2000, 2010)"));
  EXPECT_FALSE(finds(u"years > 2011"));
}

TEST(AnAttributeOfManyValues, IsUnequalToEachOfThem) {
  EXPECT_TRUE(finds(u"authors != \"Bob\""));
  EXPECT_TRUE(finds(u"authors != \"Ann\" && authors != \"Bob\""));
  EXPECT_TRUE(finds(u"!(authors == \"Cid\")"));
  EXPECT_FALSE(finds(u"!(authors == \"Bob\")"));
}

TEST(AMissingAttribute, MatchesNoComparisonButUnequal) {
  for (const auto* query :
       {u"none == \"*\"", u"none == 0", u"none < 1", u"none > 1", u"none <= 1", u"none >= 1",
        u"none > $time.today(-9999)", u"InRange(none, 0, 1)", u"none == false", u"empty == \"*\""}) {
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
  EXPECT_TRUE(finds(u"* == \"True\""));   // the text
  EXPECT_FALSE(finds(u"* == \"true\""));  // in quotes, no flag either
  EXPECT_FALSE(finds(u"* == \"false\""));
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

// Tells which attributes it is asked for, and knows none of them.
class Asked : public AttributeSource {
 public:
  bool values(const AttributeKey& key, std::vector<Value>& values) override {
    if (key.file == FileAttribute::FSName) values.emplace_back(std::string_view("a.txt"));
    if (key.file == FileAttribute::FSSize) values.emplace_back(int64_t{10});
    keys.push_back(key.name.substr(std::string_view("kMDItem").size()));
    return true;
  }
  std::vector<std::string> keys;
};

std::vector<std::string> askedFor(std::u16string_view query) {
  Asked asked;
  match(*std::get<ExpressionRef>(parseQuery(query)), asked);
  return asked.keys;
}

using Keys = std::vector<std::string>;

TEST(WhatIsCheap, IsAskedForFirst) {
  const Keys name = {"FSName"};
  EXPECT_EQ(askedFor(u"kMDItemTextContent == x && kMDItemFSName == b"), name);
  EXPECT_EQ(askedFor(u"kMDItemTextContent == x || kMDItemFSName == a.txt"), name);
  EXPECT_EQ(askedFor(u"!(kMDItemTextContent == x || kMDItemTitle == y) && kMDItemFSName == b"), name);
  EXPECT_EQ(askedFor(u"kMDItemTitle == x && kMDItemFSSize > 10 && kMDItemFSName == a.txt"),
            (Keys{"FSName", "FSSize"}));
  EXPECT_EQ(askedFor(u"kMDItemTitle != x && kMDItemKind != x && kMDItemWhereFroms == x"), Keys{"WhereFroms"});
  EXPECT_EQ(askedFor(u"kMDItemTitle != x && kMDItemKind == x && kMDItemWhereFroms != x"),
            (Keys{"WhereFroms", "Kind"}));
}

TEST(WhatIsCheap, DecidesAlsoWithinWhatIsDear) {
  EXPECT_EQ(
      askedFor(u"(kMDItemTitle == x || kMDItemFSName == b) && !(kMDItemTitle == y || kMDItemFSSize == 10)"),
      (Keys{"FSName", "FSSize"}));
}

TEST(WhatIsEquallyCheap, IsAskedForInItsOrder) {
  EXPECT_EQ(askedFor(u"kMDItemAlbum == x || kMDItemTitle == x || kMDItemTextContent == x"),
            (Keys{"Album", "Title", "TextContent"}));
}

}  // namespace
}  // namespace standin::metadata
