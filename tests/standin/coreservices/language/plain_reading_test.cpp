// Random texts and patterns, compared with a plain reading of the rules: the whole text is composed at once,
// each character is folded, and the pattern is tried at every border. It shares no code with the matcher,
// which passes over most of a text and composes little of it.
#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/language/text_pattern.h"
#include "tests/support/sanitizers.h"
#include "tests/support/tier.h"

namespace standin::metadata {
namespace {

// --- what a pattern means ---

std::u16string units(std::u32string_view text) {
  std::u16string result(text.size() * 2, u'\0');
  int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  std::vector<UChar32> characters(text.begin(), text.end());
  u_strFromUTF32(result.data(), static_cast<int32_t>(result.size()), &length, characters.data(),
                 static_cast<int32_t>(characters.size()), &error);
  result.resize(static_cast<size_t>(length));
  return result;
}

std::u32string characters(std::u16string_view text) {
  std::u32string result;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isPair = U16_IS_LEAD(text[i]) && i + 1 < text.size();
    result += isPair ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(text[i], text[i + 1])) : text[i];
    i += isPair;
  }
  return result;
}

std::u32string normalized(const UNormalizer2* form, std::u32string_view text) {
  const std::u16string given = units(text);
  std::u16string result(given.size() * 20, u'\0');
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = unorm2_normalize(form, given.data(), static_cast<int32_t>(given.size()),
                                          result.data(), static_cast<int32_t>(result.size()), &error);
  EXPECT_TRUE(U_SUCCESS(error));
  result.resize(static_cast<size_t>(length));
  return characters(result);
}

bool isMarkCharacter(char32_t c) {
  const auto type = u_charType(static_cast<UChar32>(c));
  return type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_COMBINING_SPACING_MARK;
}

// What is compared of each character of the text.
std::vector<std::u32string> folded(std::u32string_view text, TextOptions options) {
  std::vector<std::u32string> result;
  for (const char32_t c : text) {
    std::u32string each(1, c);
    UErrorCode error = U_ZERO_ERROR;
    if (options.ignoreDiacritics) {
      each = normalized(unorm2_getNFDInstance(&error), each);
      std::erase_if(each, isMarkCharacter);
    }
    if (options.ignoreCase) {
      const std::u16string given = units(each);
      std::u16string small(given.size() * 4, u'\0');
      const int32_t length = u_strFoldCase(small.data(), static_cast<int32_t>(small.size()), given.data(),
                                           static_cast<int32_t>(given.size()), U_FOLD_CASE_DEFAULT, &error);
      EXPECT_TRUE(U_SUCCESS(error));
      each = characters(small.substr(0, static_cast<size_t>(length)));
    }
    result.push_back(each);
  }
  return result;
}

std::u32string composedText(std::u32string_view text) {
  UErrorCode error = U_ZERO_ERROR;
  return normalized(unorm2_getNFCInstance(&error), text);
}

class PlainReading {
 public:
  PlainReading(const std::vector<PatternElement>& pattern, TextOptions options) : options_(options) {
    std::u32string run;
    const auto endRun = [&] {
      for (const std::u32string& each : folded(composedText(run), options)) {
        for (const char32_t c : each) pattern_.push_back({PatternElement::Literal, c});
      }
      run.clear();
    };
    for (const PatternElement& element : pattern) {
      if (element.kind == PatternElement::Literal) {
        run += element.character;
      } else {
        endRun();
        pattern_.push_back(element);
      }
    }
    endRun();
  }

  bool matches(std::u32string_view text) {
    text_ = composedText(text);
    folded_ = folded(text_, options_);
    if (!options_.wholeWords) return matchesFrom(0, 0, 0);
    for (size_t start = 0; start <= text_.size(); ++start) {
      if ((start == 0 || isBorder(start)) && matchesFrom(0, start, 0)) return true;
    }
    return false;
  }

 private:
  bool isBorder(size_t at) const {
    if (at == text_.size()) return true;
    if (isMarkCharacter(text_[at])) return false;
    size_t before = at;
    while (before > 0 && isMarkCharacter(text_[before - 1])) --before;
    if (before == 0) return true;
    const auto left = static_cast<UChar32>(text_[before - 1]);
    const auto right = static_cast<UChar32>(text_[at]);
    return !u_isalpha(left) || !u_isalpha(right) || (u_islower(left) && u_isupper(right));
  }

  // The pattern from one place on, and the text from one place in what a character folds to.
  bool matchesFrom(size_t element, size_t at, size_t place) const {
    const bool isBetween = place == 0;
    if (element == pattern_.size() && isBetween &&
        (options_.wholeWords ? isBorder(at) : at == text_.size())) {
      return true;
    }
    const auto* const wanted = element < pattern_.size() ? &pattern_[element] : nullptr;
    if (wanted && wanted->kind == PatternElement::AnyRun && matchesFrom(element + 1, at, place)) return true;
    if (at == text_.size()) return false;
    if (wanted && wanted->kind == PatternElement::AnyOne && isBetween &&
        matchesFrom(element + 1, at + 1, 0)) {
      return true;
    }
    const std::u32string& here = folded_[at];
    if (place == here.size()) return matchesFrom(element, at + 1, 0);
    if (!wanted || wanted->kind == PatternElement::AnyOne) return false;
    const bool isRun = wanted->kind == PatternElement::AnyRun;
    if (!isRun && wanted->character != here[place]) return false;
    const size_t next = isRun ? element : element + 1;
    return place + 1 == here.size() ? matchesFrom(next, at + 1, 0) : matchesFrom(next, at, place + 1);
  }

  std::vector<PatternElement> pattern_;
  const TextOptions options_;
  std::u32string text_;
  std::vector<std::u32string> folded_;
};

// --- texts and patterns at random ---

// A text, and what its bytes read as.
struct Text {
  std::string bytes;
  std::u32string characters;

  void add(char32_t c) {
    char encoded[U8_MAX_LENGTH];
    size_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, static_cast<UChar32>(c));
    bytes.append(encoded, length);
    characters += c;
  }
  void addBroken(std::string_view broken) {
    bytes += broken;
    for (const char byte : broken) {
      constexpr char32_t kDigits[] = U"0123456789ABCDEF";
      characters += U'%';
      characters += kDigits[static_cast<uint8_t>(byte) >> 4];
      characters += kDigits[byte & 15];
    }
  }
};

// For the message of a failure.
std::string shown(const std::vector<PatternElement>& pattern) {
  std::string result;
  for (const PatternElement& element : pattern) {
    char text[16] = "*";
    if (element.kind == PatternElement::AnyOne) text[0] = '?';
    if (element.kind == PatternElement::Literal) {
      std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(element.character));
    }
    result += std::string(" ") + text;
  }
  return result;
}

class Maker {
 public:
  explicit Maker(uint32_t seed) : random_(seed) {}

  Text text() {
    Text made;
    for (size_t run = below(7); run > 0; --run) {
      const std::u32string_view kind = kKinds[below(3) != 0 ? 0 : below(kKinds.size())];
      for (size_t i = below(below(4) != 0 ? 7 : 40); i > 0; --i) {
        made.add(kind[below(kind.size())]);
        if (below(60) == 0) made.addBroken(kBroken[below(kBroken.size())]);
      }
    }
    return made;
  }

  // What is near to a part of the text, and of one character at least.
  std::vector<PatternElement> pattern(const Text& text, bool hasWildcards) {
    std::vector<PatternElement> made;
    const size_t size = text.characters.size();
    const size_t start = size == 0 ? 0 : below(size);
    const size_t end = std::min(size, start + below(below(2) != 0 ? 5 : 25));
    size_t wildcards = hasWildcards ? 3 : 0;
    for (size_t i = start; i < end; ++i) {
      const std::u32string_view kind = kKinds[below(kKinds.size())];
      const char32_t character = below(12) == 0 ? kind[below(kind.size())] : text.characters[i];
      if (below(30) == 0) continue;
      if (wildcards > 0 && below(4) == 0) {
        --wildcards;
        made.push_back({below(2) != 0 ? PatternElement::AnyOne : PatternElement::AnyRun, 0});
      } else {
        made.push_back({PatternElement::Literal, character});
      }
    }
    if (made.empty()) made.push_back({PatternElement::Literal, U'a'});
    return made;
  }

  size_t below(size_t bound) { return random_() % bound; }

 private:
  static constexpr std::array<std::u32string_view, 8> kKinds = {
      U"abAB ",
      U"sSfFiIkKjh",
      U"ß\u1E9E\uFB00\uFB01\uFB03\u212A\u212B\u0130\u0131",  // fold to ASCII letters, or nearly
      U"éÉóÓàŻ\u201C\u2019\u2013",
      U"\u0301\u030C\u0307\u0308\u0338\u0323\u0331",  // combine, in an order of their own
      U"\u1100\u1161\u11A8\uAC00\uAC01",              // compose without being marks
      U"\U0001F600\U0001D400\U00010400\U0001D15E\u4E2D -",
      U"\u0915\u093C\u0958\u0344\u0300\u1E96\u01F0"};  // some of them never stay composed
  static constexpr std::array<std::string_view, 7> kBroken = {
      "\xFF", "\xC3", "\xE2\x82", "\xED\xA0\x80", "\x80", "\xF0\x9F\x98", "\xC0\xAF"};

  std::mt19937 random_;
};

TextOptions optionsOf(unsigned bits) {
  return {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
}

TEST(RandomTexts, AreReadAsPlainReadingReadsThem) {
  const int rounds = isLongTier() ? 100000 : underAddressSanitizer() ? 1000 : 3000;
  Maker maker(20110305);
  int matched = 0;
  for (int round = 0; round < rounds; ++round) {
    const Text text = maker.text();
    const std::vector<PatternElement> pattern = maker.pattern(text, round % 4 == 0);
    for (unsigned bits = 0; bits < 8; ++bits) {
      const bool meant = PlainReading(pattern, optionsOf(bits)).matches(text.characters);
      ASSERT_EQ(TextPattern(pattern, optionsOf(bits)).matches(text.bytes), meant)
          << "round " << round << ", options " << bits << ": " << text.bytes << ", pattern" << shown(pattern);
      matched += meant;
    }
  }
  EXPECT_GT(matched, rounds);
  EXPECT_LT(matched, rounds * 7);
}

// What comes before is longer than what is looked at or composed at once.
TEST(RandomTexts, AreReadTheSameAfterALongOne) {
  constexpr size_t kPiece = 64 << 10;
  const int rounds = isLongTier() ? 5000 : underAddressSanitizer() ? 70 : 200;
  Maker maker(20110306);
  int matched = 0;
  for (int round = 0; round < rounds; ++round) {
    // None of the patterns has a "z", or two blanks after each other that stand in nothing but a text of
    // theirs.
    const std::string_view word = maker.below(2) != 0 ? "q " : "q\u0445 ";
    std::string before;
    while (before.size() < kPiece - maker.below(40)) before += word;
    const Text text = maker.text();
    const std::vector<PatternElement> pattern = maker.pattern(text, false);
    for (unsigned bits = 4; bits < 8; ++bits) {
      const bool meant = PlainReading(pattern, optionsOf(bits)).matches(U' ' + text.characters);
      ASSERT_EQ(TextPattern(pattern, optionsOf(bits)).matches(before + text.bytes), meant)
          << "round " << round << ", options " << bits << ": " << text.bytes << ", pattern" << shown(pattern);
      matched += meant;
    }
  }
  EXPECT_GT(matched, rounds);
  EXPECT_LT(matched, rounds * 4);
}

}  // namespace
}  // namespace standin::metadata
