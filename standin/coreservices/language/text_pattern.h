// A text to compare with, as a query states it: literal characters and wildcards, and how strictly to
// compare.
//
// Composed and decomposed characters are the same text in every mode. Ignoring case and diacritics compares
// folded characters, so one letter may stand for two ("ß" for "ss"). `?` stands for one character of the
// composed text, whatever that folds to: ignoring more never finds less.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "standin/coreservices/language/characters.h"
#include "standin/coreservices/language/word_search.h"

namespace standin::metadata {

struct PatternElement {
  enum Kind : uint8_t { Literal, AnyOne, AnyRun } kind;
  char32_t character;  // of a Literal
};

class TextPattern {
 public:
  TextPattern() = default;
  TextPattern(const std::vector<PatternElement>& elements, TextOptions options);

  // Compares the whole text, or with wholeWords any part of it that starts and ends at a word's border:
  // beside anything that isn't a letter, where a lower-case letter meets an upper-case one, and at the text's
  // ends. With wildcards or wholeWords, memory doesn't grow with the text.
  bool matches(std::string_view bytes) const;

  // True for a lone `*`: every value matches, of whatever type.
  bool matchesEverything() const;

 private:
  std::vector<PatternElement> elements_;  // literal runs folded
  TextOptions options_;
  bool literal_ = false;             // no wildcards
  std::optional<WordSearch> words_;  // of one character or more, with wholeWords and no wildcards
};

}  // namespace standin::metadata
