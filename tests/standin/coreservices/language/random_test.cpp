// Random conditions, written down in random ways, parsed, and matched with random attributes; compared with
// what the conditions mean by a plain reading of the rules, which shares no code with the matcher.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <list>
#include <map>
#include <random>
#include <string>

#include "standin/coreservices/language/match.h"
#include "standin/coreservices/language/parser.h"
#include "tests/support/local_zone.h"
#include "tests/support/sanitizers.h"
#include "tests/support/tier.h"

namespace standin::metadata {
namespace {

constexpr double kMidnight = 320976000;  // 2011-03-05 00:00:00 GMT
constexpr double kNow = kMidnight + 45296;
constexpr double kDay = 86400;
// Attributes that take more and more to be told, and one that no file has.
const std::vector<std::string> kKeys = {"kMDItemTitle", "kMDItemFSSize", "kMDItemFSName", "none"};
const std::string &kOne = kKeys[0], &kTwo = kKeys[1], &kMany = kKeys[2];

// Text is made of these; the letters with accents are U+00F3 and U+00D3.
constexpr std::u32string_view kLetters = U"aAbBoO\u00F3\u00D3 -1";

char32_t lower(char32_t c) {
  return c == U'\u00D3' ? U'\u00F3' : c >= U'A' && c <= U'Z' ? c + 32 : c;
}
char32_t plain(char32_t c) {
  return c == U'\u00D3' ? U'O' : c == U'\u00F3' ? U'o' : c;
}
bool isLetter(char32_t c) {
  return lower(c) >= U'a';
}

struct Mark {
  char32_t character;
  enum { Itself, Run, One } meaning;
};

struct Condition {
  enum { Text, Number, Truth, Days, Instant, Range, And, Or, Not } kind;
  std::string key;  // "*" for any
  std::string op;
  std::vector<Mark> text;
  bool c, d, w;
  double number;   // of a Number; days from today of Days; seconds from now of an Instant
  double highest;  // of a Range
  bool truth;
  bool quoted;  // a Truth
  std::vector<Condition> parts;
};

struct Held {
  enum { Truth, Number, Date, Text } kind;
  double number;
  std::u32string text;
};
using File = std::map<std::string, std::vector<Held>>;

// --- what a condition means ---

bool glob(const Mark* mark, const Mark* end, std::u32string_view text, const Condition& how) {
  if (mark == end) return text.empty();
  if (mark->meaning == Mark::Run) {
    return glob(mark + 1, end, text, how) || (!text.empty() && glob(mark, end, text.substr(1), how));
  }
  const auto reduce = [&](char32_t c) {
    if (how.c) c = lower(c);
    return how.d ? plain(c) : c;
  };
  if (text.empty()) return false;
  if (mark->meaning == Mark::Itself && reduce(mark->character) != reduce(text[0])) return false;
  return glob(mark + 1, end, text.substr(1), how);
}

bool border(std::u32string_view text, size_t at) {
  if (at == 0 || at == text.size() || !isLetter(text[at - 1]) || !isLetter(text[at])) return true;
  return lower(text[at - 1]) == text[at - 1] && lower(text[at]) != text[at];
}

bool meansText(const Condition& condition, std::u32string_view text) {
  const Mark* const first = condition.text.data();
  const Mark* const end = first + condition.text.size();
  if (!condition.w) return glob(first, end, text, condition);
  for (size_t from = 0; from <= text.size(); ++from) {
    for (size_t to = from; to <= text.size(); ++to) {
      const bool isWord = border(text, from) && border(text, to);
      if (isWord && glob(first, end, text.substr(from, to - from), condition)) return true;
    }
  }
  return false;
}

// The number that text means: one or more digits, perhaps a minus sign before them.
std::optional<double> numberIn(const std::vector<Mark>& text) {
  std::string digits;
  for (const Mark& mark : text) {
    if (mark.meaning != Mark::Itself || (mark.character != U'-' && mark.character != U'1')) return {};
    digits += static_cast<char>(mark.character);
  }
  if (digits.empty() || digits.find('-', 1) != std::string::npos || digits == "-") return {};
  return std::stod(digits);
}

bool isStar(const Condition& condition) {
  const auto isRun = [](const Mark& mark) { return mark.meaning == Mark::Run; };
  return condition.kind == Condition::Text && !condition.text.empty() &&
         std::all_of(condition.text.begin(), condition.text.end(), isRun);
}

bool equal(const Condition& condition, const Held& held) {
  if (isStar(condition)) return true;
  if (condition.kind == Condition::Truth) {
    if (condition.quoted && condition.key == "*") return false;  // text, which our letters don't make
    return held.kind == Held::Truth && (held.number != 0) == condition.truth;
  }
  if (condition.kind == Condition::Text && held.kind == Held::Text) return meansText(condition, held.text);
  if (held.kind == Held::Text) {  // which, made of our letters, looks like no other number and like no time
    return condition.kind == Condition::Number && std::abs(condition.number) == 1 &&
           held.text == (condition.number == 1 ? U"1" : U"-1");
  }
  if (condition.kind == Condition::Days) {
    const double start = kMidnight + condition.number * kDay;
    return held.number >= start && held.number < start + kDay;
  }
  if (held.kind == Held::Truth && condition.key == "*") return false;
  std::optional<double> number = condition.number;
  if (condition.kind == Condition::Text) number = numberIn(condition.text);
  if (condition.kind == Condition::Instant) number = kNow + condition.number;
  return number == held.number;
}

bool holds(const Condition& condition, const Held& held) {
  if (condition.kind != Condition::Range && condition.op == "==") return equal(condition, held);
  if (condition.kind != Condition::Range && condition.op == "!=") return !equal(condition, held);
  if (held.kind == Held::Text || held.kind == Held::Truth) return false;
  if (condition.kind == Condition::Range) {
    return held.number >= condition.number && held.number <= condition.highest;
  }
  double number = condition.number;
  if (condition.kind == Condition::Days) number = kMidnight + number * kDay;
  if (condition.kind == Condition::Instant) number += kNow;
  if (condition.op == "<") return held.number < number;
  if (condition.op == ">") return held.number > number;
  return condition.op == "<=" ? held.number <= number : held.number >= number;
}

bool means(const Condition& condition, const File& file) {
  const auto part = [&](const Condition& c) { return means(c, file); };
  const auto& parts = condition.parts;
  if (condition.kind == Condition::And) return std::all_of(parts.begin(), parts.end(), part);
  if (condition.kind == Condition::Or) return std::any_of(parts.begin(), parts.end(), part);
  if (condition.kind == Condition::Not) return !part(parts[0]);
  bool any = false;
  bool found = false;
  for (const auto& [key, values] : file) {
    if (condition.key != "*" && condition.key != key) continue;
    for (const Held& held : values) {
      any = true;
      found = found || holds(condition, held);
    }
  }
  return any ? found : condition.kind != Condition::Range && condition.op == "!=";
}

// --- conditions and files at random, and how they are written ---

class Maker {
 public:
  explicit Maker(uint32_t seed) : random_(seed) {}

  Condition condition(int depth) {
    Condition made{};
    if (depth > 0 && below(2)) {
      made.kind = std::array{Condition::And, Condition::Or, Condition::Not}[below(3)];
      const size_t count = made.kind == Condition::Not ? 1 : 2 + below(2);
      for (size_t i = 0; i < count; ++i) made.parts.push_back(condition(depth - 1));
      return made;
    }
    made.kind = std::array{Condition::Text,  Condition::Text, Condition::Text,    Condition::Number,
                           Condition::Truth, Condition::Days, Condition::Instant, Condition::Range}[below(8)];
    made.key = kKeys[below(kKeys.size())];
    const bool orders = made.kind == Condition::Number || made.kind >= Condition::Days;
    made.op = std::array{"==", "!=", "<", ">", "<=", ">="}[below(orders ? 6 : 2)];
    if (made.op == "==" && made.kind != Condition::Range && !below(4)) made.key = "*";
    made.text = marks();
    made.c = below(2) != 0;
    made.d = below(2) != 0;
    made.w = below(2) != 0;
    made.number = static_cast<double>(below(7)) - 3;
    if (made.kind == Condition::Number && below(2)) made.number += 0.5;
    made.highest = made.number + static_cast<double>(below(4)) - 1;
    made.truth = below(2) != 0;
    made.quoted = below(2) != 0;
    return made;
  }

  File file() {
    File made;
    made[kOne] = {held()};
    if (below(2)) made[kTwo] = {held()};
    for (size_t i = below(4); i > 0; --i) made[kMany].push_back(held());
    return made;
  }

  std::u16string written(const Condition& condition) {
    using C = Condition;
    if (condition.kind == C::Not) return u"!" + blanks() + parenthesized(condition.parts[0]);
    if (condition.kind == C::And || condition.kind == C::Or) {
      std::u16string text;
      for (const Condition& part : condition.parts) {
        if (!text.empty()) text += blanks() + (condition.kind == C::And ? u"&&" : u"||") + blanks();
        const bool needed = condition.kind == C::And && part.kind == C::Or;
        text += needed || !below(4) ? parenthesized(part) : written(part);
      }
      return text;
    }
    if (condition.kind == C::Range) {
      const auto comma = [&] { return blanks() + u"," + blanks(); };
      return (below(2) ? u"InRange" : u"iNrANGE") + blanks() + u"(" + blanks() + wide(condition.key) +
             comma() + quotedOrNot(number(condition.number)) + comma() +
             quotedOrNot(number(condition.highest)) + blanks() + u")";
    }
    return comparison(condition);
  }

 private:
  size_t below(size_t bound) { return random_() % bound; }
  std::u16string blanks() { return std::u16string(below(3), below(2) ? u' ' : u'\t'); }
  static std::u16string wide(std::string_view text) { return {text.begin(), text.end()}; }

  std::vector<Mark> marks() {
    std::vector<Mark> made;
    for (size_t i = below(5); i > 0; --i) {
      const size_t choice = below(kLetters.size() + 4);
      if (choice < kLetters.size()) made.push_back({kLetters[choice], Mark::Itself});
      if (choice == kLetters.size()) made.push_back({U'?', Mark::One});
      if (choice == kLetters.size() + 1) made.push_back({U'*', Mark::Itself});
      if (choice > kLetters.size() + 1) made.push_back({U'*', Mark::Run});
    }
    return made;
  }

  Held held() {
    Held made{};
    made.kind = std::array{Held::Truth, Held::Number, Held::Date, Held::Text, Held::Text}[below(5)];
    if (made.kind == Held::Truth) made.number = static_cast<double>(below(2));
    if (made.kind == Held::Number) made.number = static_cast<double>(below(15)) / 2 - 3;
    if (made.kind == Held::Date) made.number = date();
    for (size_t i = below(6); i > 0; --i) {
      made.text += below(8) ? kLetters[below(kLetters.size())] : std::u32string_view(U"*?")[below(2)];
    }
    return made;
  }

  double date() {
    const double days = kMidnight + (static_cast<double>(below(7)) - 3) * kDay;
    const double distance = static_cast<double>(below(5)) - 2;
    return std::array{days, days - 0.25, days + 40000, kNow + distance, distance}[below(5)];
  }

  static std::u16string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, value == std::floor(value) ? "%.0f" : "%.1f", value);
    return wide(text);
  }

  std::u16string quotedOrNot(const std::u16string& text) {
    const char16_t quote = below(2) ? u'"' : u'\'';
    return below(2) ? text : quote + text + quote;
  }

  std::u16string truth(const Condition& condition) {
    std::u16string word = condition.truth ? u"true" : u"false";
    for (char16_t& letter : word) letter = static_cast<char16_t>(below(2) ? letter : letter - 32);
    return condition.quoted ? u'"' + word + u'"' : word;
  }

  std::u16string parenthesized(const Condition& condition) {
    return u"(" + blanks() + written(condition) + blanks() + u")";
  }

  std::u16string value(const Condition& condition) {
    const std::u16string distance = u"(" + blanks() + number(condition.number) + blanks() + u")";
    switch (condition.kind) {
      case Condition::Number:
        return quotedOrNot(number(condition.number));
      case Condition::Truth:
        return truth(condition);
      case Condition::Days:
        if (condition.number == -1 && below(2)) return quotedOrNot(u"$time.yesterday");
        if (condition.number == 0 && below(2)) return quotedOrNot(u"$time.today");
        return quotedOrNot(u"$time.today" + distance);
      case Condition::Instant:
        return quotedOrNot(u"$time.now" + distance);
      default:
        return text(condition.text);
    }
  }

  std::u16string text(const std::vector<Mark>& marks) {
    const char16_t quote = below(2) ? u'"' : u'\'';
    std::u16string quoted(1, quote);
    std::u16string bare;
    bool mayBeBare = !marks.empty();
    for (const Mark& mark : marks) {
      const auto unit = static_cast<char16_t>(mark.character);
      const bool special = mark.meaning == Mark::Itself && unit == u'*';
      if (special || (mark.meaning == Mark::Itself && !below(8))) quoted += u'\\';
      quoted += unit;
      bare += unit;
      mayBeBare = mayBeBare && !special && unit != u' ';
    }
    return mayBeBare && below(2) ? bare : quoted + quote;
  }

  // The modifiers, each in a place of its own choice.
  std::u16string comparison(const Condition& condition) {
    std::array<std::u16string, 3> places;
    const bool anywhere = condition.key != "*";
    const auto put = [&](bool wanted, char16_t letter) {
      if (wanted && condition.kind == Condition::Text) places[anywhere ? below(3) : 1 + below(2)] += letter;
    };
    put(condition.c, u'c');
    put(condition.d, u'd');
    put(condition.w, u'w');
    const auto bracketed = [](const std::u16string& letters) {
      return letters.empty() ? letters : u"[" + letters + u"]";
    };
    std::u16string op = wide(condition.op == "==" && below(2) ? "=" : condition.op);
    const std::u16string stated = value(condition);
    const bool quoted = stated.back() == u'"' || stated.back() == u'\'';
    const std::u16string gap = places[2].empty() || quoted ? blanks() : u" " + blanks();
    return wide(condition.key) + blanks() + bracketed(places[0]) + blanks() + op + blanks() +
           bracketed(places[1]) + blanks() + stated + gap + places[2];
  }

  std::mt19937 random_;
};

std::string utf8(std::u32string_view text) {
  std::string bytes;
  for (const char32_t c : text) {
    if (c >= 0x80) bytes += static_cast<char>(0xC0 | c >> 6);
    bytes += static_cast<char>(c < 0x80 ? c : 0x80 | (c & 0x3F));
  }
  return bytes;
}

class FileOfValues : public AttributeSource {
 public:
  explicit FileOfValues(const File& file) : file_(file) {}

  bool values(const AttributeKey& key, std::vector<Value>& values) override {
    texts_.clear();
    bool areAll = true;
    for (const auto& [name, own] : file_) {
      if (!key.any && key.name != name) continue;
      areAll = areAll && name != unknown;
      if (name == unknown) continue;
      for (const Held& held : own) values.push_back(valueOf(held));
    }
    return areAll;
  }

  std::string unknown;  // an attribute that isn't known

 private:
  Value valueOf(const Held& held) {
    if (held.kind == Held::Truth) return held.number != 0;
    if (held.kind == Held::Date) return Date{held.number};
    if (held.kind == Held::Text) return std::string_view(texts_.emplace_back(utf8(held.text)));
    if (held.number == std::floor(held.number)) return static_cast<int64_t>(held.number);
    return held.number;
  }

  const File& file_;
  std::list<std::string> texts_;
};

TEST(RandomConditions, MatchWhatTheirPlainReadingMatches) {
  const LocalZone zone("GMT0");
  const int rounds = isLongTier() ? 200000 : underAddressSanitizer() ? 1500 : 5000;
  Maker maker(20110305);
  int matched = 0, undecided = 0;
  for (int round = 0; round < rounds; ++round) {
    const Condition condition = maker.condition(3);
    const std::u16string text = maker.written(condition);
    const std::string shown = utf8(std::u32string(text.begin(), text.end()));
    const auto parsed = parseQuery(text);
    if (const auto* const error = std::get_if<ParseError>(&parsed)) {
      FAIL() << shown << " at " << error->position << ": " << error->reason;
    }
    const ExpressionRef expression = resolve(std::get<ExpressionRef>(parsed), Date{kNow});
    for (int i = 0; i < 20; ++i) {
      const File file = maker.file();
      FileOfValues source(file);
      const bool meant = means(condition, file);
      matched += meant;
      const Match expected = meant ? Match::Yes : Match::No;
      ASSERT_EQ(match(*expression, source), expected) << "round " << round << ": " << shown;
      for (const std::string& key : kKeys) {  // what is told before all is known is what is told then
        source.unknown = key;
        const Match early = match(*expression, source);
        ASSERT_TRUE(early == expected || early == Match::Unknown) << key << ": " << shown;
        undecided += early == Match::Unknown;
      }
      source.unknown.clear();
    }
  }
  EXPECT_GT(undecided, rounds * 4);
  EXPECT_GT(matched, rounds * 4);
  EXPECT_LT(matched, rounds * 16);
}

}  // namespace
}  // namespace standin::metadata
