// Query strings of every kind of nonsense: each is taken or refused, with a place in it and a reason, and
// what is taken can be matched.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "standin/coreservices/language/match.h"
#include "standin/coreservices/language/parser.h"
#include "tests/support/tier.h"

namespace standin::metadata {
namespace {

constexpr const char16_t* kValid[] = {
    u"k == 1",
    u"k != -1.5e3 && j = 'x'",
    u"(a == \"x\"cdw || b[c] == 'y' d) && !(c ==[w] *z?)",
    u"InRange(size, 1, 10) || inrange ( born , $time.yesterday(-2) , \"$time.now\" )",
    u"kMDItemFSContentChangeDate >= $time.iso(2011-03-05T12:00:00.25+01:00)",
    u"born == $time.iso( 2011-03-05 ) || born < $time.this_week( -1 ) c",
    u"title == \"a\\\"b\\*c\\\\d\" && hidden == false",
    u"kMDItemTextContent == \"New  York\" || * == \"\u00e9\u6771\xD83C\xDF4E\"cd",
    u"((((k == 1))))",
};

class OneFile : public AttributeSource {
 public:
  bool values(const AttributeKey&, std::vector<Value>& values) override {
    values.insert(values.end(),
                  {true, int64_t{1}, -1500.0, Date{321019200}, std::string_view("a\xFF\xC3\xA9")});
    return true;
  }
};

std::string shown(std::u16string_view text) {
  std::string units;
  char unit[8];
  for (const char16_t c : text) {
    std::snprintf(unit, sizeof unit, c >= u' ' && c < 0x7F ? "%c" : "\\u%04X", static_cast<unsigned>(c));
    units += unit;
  }
  return units;
}

// Answers whether the text was taken.
bool check(std::u16string_view text) {
  const auto result = parseQuery(text);
  if (const auto* const error = std::get_if<ParseError>(&result)) {
    EXPECT_LE(error->position, text.size()) << shown(text);
    EXPECT_FALSE(error->reason.empty()) << shown(text);
    return false;
  }
  OneFile file;
  match(*resolve(std::get<ExpressionRef>(result), Date{321021296}), file);
  return true;
}

size_t rounds() {
  return isLongTier() ? 1000000 : 20000;
}

class Dice {
 public:
  explicit Dice(uint32_t seed) : random_(seed) {}
  size_t below(size_t bound) { return random_() % bound; }

 private:
  std::mt19937 random_;
};

TEST(ValidQueries, AreTakenWhole) {
  for (const auto* text : kValid) EXPECT_TRUE(check(text)) << shown(text);
}

TEST(Prefixes, AreTakenOrRefusedAtAPlaceWithinThem) {
  for (const std::u16string_view text : kValid) {
    for (size_t length = 0; length < text.size(); ++length) check(text.substr(0, length));
  }
}

TEST(ValidQueries, MayLoseOrChangeAnyUnit) {
  constexpr std::u16string_view kUnits = u"\"'\\()[]{}!=<>&|,$.*?-+ cwTZ09\0\n\xD83C\xDF4E\uFFFF";
  for (const std::u16string_view text : kValid) {
    for (size_t i = 0; i < text.size(); ++i) {
      std::u16string changed(text);
      for (const char16_t unit : kUnits) {
        changed[i] = unit;
        check(changed);
      }
      changed.erase(i, 1);
      check(changed);
    }
  }
}

TEST(RandomUnits, AreTakenOrRefused) {
  Dice dice(1);
  for (size_t round = 0; round < rounds(); ++round) {
    std::u16string text;
    for (size_t i = dice.below(24); i > 0; --i) {
      text += static_cast<char16_t>(dice.below(2) ? dice.below(0x80) : dice.below(0x10000));
    }
    check(text);
  }
}

TEST(RandomTokens, AreTakenOrRefused) {
  constexpr std::u16string_view kTokens[] = {u"k",
                                             u"*",
                                             u"==",
                                             u"=",
                                             u"!=",
                                             u"<",
                                             u">=",
                                             u"1",
                                             u"-1.5",
                                             u"\"x\"",
                                             u"'y'",
                                             u"cd",
                                             u"[w]",
                                             u"&&",
                                             u"||",
                                             u"!",
                                             u"(",
                                             u")",
                                             u",",
                                             u"InRange",
                                             u" ",
                                             u"true",
                                             u"\"",
                                             u"\\",
                                             u"$time.",
                                             u"today",
                                             u"(-1)",
                                             u"iso",
                                             u"(2011-03-05T12:00Z)",
                                             u"\xD800",
                                             u"\xDC00"};
  Dice dice(2);
  size_t taken = 0;
  for (size_t round = 0; round < rounds(); ++round) {
    std::u16string text = dice.below(2) ? u"k == " : u"";
    for (size_t i = dice.below(10); i > 0; --i) text += kTokens[dice.below(std::size(kTokens))];
    taken += check(text);
  }
  EXPECT_GT(taken, rounds() / 100);  // not all of it is nonsense
}

TEST(LongQueries, AreTakenOrRefused) {
  constexpr size_t kLong = 1000000;
  EXPECT_FALSE(check(std::u16string(kLong, u'(')));
  EXPECT_FALSE(check(std::u16string(kLong, u'!')));
  EXPECT_FALSE(check(std::u16string(kLong, u'\\')));
  EXPECT_FALSE(check(std::u16string(kLong, u'k')));
  EXPECT_TRUE(check(u"k == \"" + std::u16string(kLong, u'*') + u"\""));
  EXPECT_TRUE(check(u"k == " + std::u16string(kLong, u'9')));
  EXPECT_FALSE(check(u"k < " + std::u16string(kLong, u'9')));
  EXPECT_FALSE(check(u"k < $time.now(" + std::u16string(kLong, u'9') + u")"));
  EXPECT_TRUE(check(u"k == $time.iso(2011-03-05T12:00:00." + std::u16string(kLong, u'9') + u"Z)"));
  std::u16string many = u"k == 1";
  for (int i = 0; i < 20000; ++i) many += i % 2 ? u" && k == 1" : u" || !(k == 1)";
  EXPECT_TRUE(check(many));
}

}  // namespace
}  // namespace standin::metadata
