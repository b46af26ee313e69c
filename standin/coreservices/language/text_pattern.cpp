#include "standin/coreservices/language/text_pattern.h"

#include <unicode/utf8.h>

#include <algorithm>

#include "standin/coreservices/attributes/text.h"

namespace standin::metadata {
namespace {

std::u32string fold(std::u32string_view text, TextOptions options) {
  std::u32string folded;
  folded.reserve(text.size());
  for (const char32_t character : composed(text)) folded += foldCharacter(character, options);
  return folded;
}

// All places of the pattern that the text read so far may have reached, advanced character by character: the
// time is bounded by pattern times text, whatever the wildcards.
class Progress {
 public:
  explicit Progress(const std::vector<PatternElement>& elements)
      : elements_(elements), now_(elements.size() + 1), next_(elements.size() + 1) {}

  void startHere() { reach(now_, 0); }
  bool atEnd() const { return now_.back() != 0; }
  bool isAnywhere() const { return isAnywhere_; }

  // One character of the text that folds to itself or to one other.
  void read(char32_t character) { step<true>(character); }

  // One character of the text, as what it folds to: one character, several or none. What stands for one takes
  // them together, and a run takes any part of them.
  void read(std::u32string_view folded) {
    if (folded.size() == 1) return read(folded.front());
    if (!isAnywhere_) return;
    before_ = now_;
    for (const char32_t character : folded) step<false>(character);
    for (size_t i = 0; i < elements_.size(); ++i) {
      if (before_[i] && elements_[i].kind == PatternElement::AnyOne) reach(now_, i + 1);
    }
  }

 private:
  template <bool isWhole>
  void step(char32_t character) {
    if (!isAnywhere_) return;
    isAnywhere_ = false;
    std::fill(next_.begin(), next_.end(), 0);
    for (size_t i = 0; i < elements_.size(); ++i) {
      if (!now_[i]) continue;
      switch (elements_[i].kind) {
        case PatternElement::AnyRun:
          reach(next_, i);
          break;
        case PatternElement::AnyOne:
          if (isWhole) reach(next_, i + 1);
          break;
        case PatternElement::Literal:
          if (elements_[i].character == character) reach(next_, i + 1);
          break;
      }
    }
    now_.swap(next_);
  }

  // A run may be empty, so reaching its start reaches what follows it too.
  void reach(std::vector<char>& places, size_t place) {
    isAnywhere_ = true;
    places[place] = 1;
    while (place < elements_.size() && elements_[place].kind == PatternElement::AnyRun) places[++place] = 1;
  }

  const std::vector<PatternElement>& elements_;
  std::vector<char> now_;
  std::vector<char> next_;
  std::vector<char> before_;
  bool isAnywhere_ = false;  // some place is reached
};

// A character, and what may compose with it.
struct Cluster {
  std::string_view bytes;
  UChar32 single;  // what that is, where it is a character by itself; otherwise negative
};

// At the start of the text, which isn't empty. It has an end also where marks follow each other without one.
Cluster firstCluster(std::string_view text) {
  constexpr size_t kLongest = 64 << 10;
  const auto length = static_cast<int32_t>(std::min(text.size(), kLongest));
  int32_t end = 0;
  UChar32 first = 0;
  U8_NEXT(text.data(), end, length, first);
  const auto has = [](UChar32 character, CharacterProperty property) {  // false of what is no UTF-8
    return character >= 0 && (propertiesOf(static_cast<char32_t>(character)) & property) != 0;
  };
  bool isSingle = has(first, kIsComposed);
  for (int32_t next = end; next < length; end = next) {
    UChar32 character = 0;
    U8_NEXT(text.data(), next, length, character);
    if (!has(character, kComposesBackward)) break;
    isSingle = false;
  }
  return {text.substr(0, static_cast<size_t>(end)), isSingle ? first : -1};
}

// Reads text cluster by cluster, so that a long one takes no more memory than a short one.
class Reading {
 public:
  Reading(const std::vector<PatternElement>& elements, TextOptions options, const WordSearch* words)
      : progress_(elements), options_(options), words_(words) {}

  bool matches(std::string_view text) {
    progress_.startHere();
    while (!text.empty()) {
      if (words_ && !progress_.isAnywhere()) {
        passOver(text);
        if (text.empty()) break;
      }
      const Cluster cluster = firstCluster(text);
      text.remove_prefix(cluster.bytes.size());
      if (cluster.single >= 0) {
        if (matchesUpTo(static_cast<char32_t>(cluster.single))) return true;
      } else {
        for (const char32_t character : composed(readableText(cluster.bytes))) {
          if (matchesUpTo(character)) return true;
        }
      }
    }
    return progress_.atEnd();
  }

 private:
  void passOver(std::string_view& text) {
    const size_t count = words_->passOver(text);
    if (count > 0) last_ = static_cast<char32_t>(text[count - 1]);
    text.remove_prefix(count);
  }

  // Reads the character where nothing matches that ends before it. Borders are found in the text before
  // folding, which hides the change from lower to upper case.
  bool matchesUpTo(char32_t character) {
    if (options_.wholeWords && isWordBorder(last_, character)) {
      if (progress_.atEnd()) return true;
      progress_.startHere();
    }
    if (progress_.isAnywhere()) read(character);
    if (!isMark(character)) last_ = character;
    return false;
  }

  void read(char32_t character) {
    if (character < 0x80) {
      const auto ascii = static_cast<char>(character);
      progress_.read(static_cast<char32_t>(options_.ignoreCase ? lowerAscii(ascii) : ascii));
    } else {
      progress_.read(foldCharacter(character, options_));
    }
  }

  Progress progress_;
  const TextOptions options_;
  const WordSearch* const words_;  // null where the pattern isn't words alone
  char32_t last_ = 0;              // that isn't a mark
};

// ASCII text, of which each character folds to itself or to its small letter, against a pattern of no matter
// what. Only the last run needs to take more where the rest doesn't fit: an earlier one that took more would
// leave less to it. So the time is bounded by pattern times text here, too.
bool matchesAscii(const std::vector<PatternElement>& elements, std::string_view text, bool ignoreCase) {
  constexpr size_t kNoRun = SIZE_MAX;
  size_t next = 0, afterRun = kNoRun, runEnd = 0;
  for (size_t at = 0; at < text.size();) {
    const auto* const element = next < elements.size() ? &elements[next] : nullptr;
    const char character = ignoreCase ? lowerAscii(text[at]) : text[at];
    if (element && element->kind == PatternElement::AnyRun) {
      afterRun = ++next;
      runEnd = at;
    } else if (element && (element->kind == PatternElement::AnyOne ||
                           element->character == static_cast<char32_t>(character))) {
      ++next;
      ++at;
    } else if (afterRun != kNoRun) {
      next = afterRun;
      at = ++runEnd;
    } else {
      return false;
    }
  }
  return std::all_of(elements.begin() + static_cast<ptrdiff_t>(next), elements.end(),
                     [](const PatternElement& element) { return element.kind == PatternElement::AnyRun; });
}

bool equalLiterals(const std::vector<PatternElement>& elements, std::u32string_view text) {
  return elements.size() == text.size() && std::equal(elements.begin(), elements.end(), text.begin(),
                                                      [](const PatternElement& element, char32_t character) {
                                                        return element.character == character;
                                                      });
}

}  // namespace

TextPattern::TextPattern(const std::vector<PatternElement>& elements, TextOptions options)
    : options_(options) {
  std::u32string run;
  const auto endRun = [&] {
    for (const char32_t character : fold(run, options)) {
      elements_.push_back({PatternElement::Literal, character});
    }
    run.clear();
  };
  for (const PatternElement& element : elements) {
    if (element.kind == PatternElement::Literal) {
      run += element.character;
    } else {
      endRun();
      // Any run after any run is one: the time to match stays pattern times text.
      const bool repeated = element.kind == PatternElement::AnyRun && !elements_.empty() &&
                            elements_.back().kind == PatternElement::AnyRun;
      if (!repeated) elements_.push_back(element);
    }
  }
  endRun();
  const auto isLiteral = [](const PatternElement& e) { return e.kind == PatternElement::Literal; };
  literal_ = std::all_of(elements_.begin(), elements_.end(), isLiteral);
  if (!literal_ || !options.wholeWords || elements_.empty()) return;
  std::u32string words;
  for (const PatternElement& element : elements_) words += element.character;
  words_.emplace(words, options.ignoreCase);
}

bool TextPattern::matches(std::string_view bytes) const {
  if (!options_.wholeWords && isAscii(bytes)) return matchesAscii(elements_, bytes, options_.ignoreCase);
  if (!options_.wholeWords && literal_) return equalLiterals(elements_, fold(readableText(bytes), options_));
  return Reading(elements_, options_, words_ ? &*words_ : nullptr).matches(bytes);
}

bool TextPattern::matchesEverything() const {
  return elements_.size() == 1 && elements_[0].kind == PatternElement::AnyRun;
}

}  // namespace standin::metadata
