#include "standin/coreservices/language/text_pattern.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <algorithm>

#include "standin/coreservices/attributes/text.h"

namespace standin::metadata {
namespace {

// Characters below this are their own composed form and never combine with what stands before them.
constexpr char32_t kFirstThatMayCompose = 0x300;

char lowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::u32string composed(std::u32string_view text) {
  const bool plain =
      std::all_of(text.begin(), text.end(), [](char32_t c) { return c < kFirstThatMayCompose; });
  if (plain) return std::u32string(text);
  const std::u16string units = utf16(text);
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const normalizer = unorm2_getNFCInstance(&error);
  std::u16string result(units.size() * 3 + 1, u'\0');  // the longest composed form of anything
  const int32_t length = unorm2_normalize(normalizer, units.data(), static_cast<int32_t>(units.size()),
                                          result.data(), static_cast<int32_t>(result.size()), &error);
  if (U_FAILURE(error)) return std::u32string(text);
  result.resize(static_cast<size_t>(length));
  return fromUtf16(result);
}

bool isMark(char32_t character) {
  return (U_GET_GC_MASK(static_cast<UChar32>(character)) & U_GC_M_MASK) != 0;
}

std::u32string withoutMarks(char32_t character) {
  UChar buffer[32];
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = unorm2_getDecomposition(
      unorm2_getNFDInstance(&error), static_cast<UChar32>(character), buffer, std::size(buffer), &error);
  std::u32string characters(1, character);
  if (U_SUCCESS(error) && length > 0) {
    characters = fromUtf16(std::u16string_view(buffer, static_cast<size_t>(length)));
  }
  std::erase_if(characters, isMark);
  return characters;
}

std::u32string caseFolded(std::u32string_view text) {
  const std::u16string units = utf16(text);
  UChar buffer[96];
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = u_strFoldCase(buffer, std::size(buffer), units.data(),
                                       static_cast<int32_t>(units.size()), U_FOLD_CASE_DEFAULT, &error);
  if (U_FAILURE(error)) return std::u32string(text);
  return fromUtf16(std::u16string_view(buffer, static_cast<size_t>(length)));
}

std::u32string foldCharacter(char32_t character, TextOptions options) {
  if (character < 0x80) {
    return {options.ignoreCase ? static_cast<char32_t>(lowerAscii(static_cast<char>(character))) : character};
  }
  std::u32string folded = options.ignoreDiacritics ? withoutMarks(character) : std::u32string(1, character);
  return options.ignoreCase ? caseFolded(folded) : folded;
}

bool isAsciiLetter(char32_t c) {
  return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z');
}

bool isLetter(char32_t c) {
  return c < 0x80 ? isAsciiLetter(c) : u_isalpha(static_cast<UChar32>(c)) != 0;
}

// Whether a word may start or end between two characters, of which the left one isn't a mark.
bool isBorder(char32_t left, char32_t right) {
  if (right >= kFirstThatMayCompose && isMark(right)) return false;  // belongs to the letter before it
  if (!isLetter(left) || !isLetter(right)) return true;
  return u_islower(static_cast<UChar32>(left)) && u_isupper(static_cast<UChar32>(right));
}

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

  // One character of the text that folds to itself or to one other.
  void read(char32_t character) { step<true>(character); }

  // One character of the text, as what it folds to: one character, several or none. What stands for one takes
  // them together, and a run takes any part of them.
  void read(std::u32string_view folded) {
    if (folded.size() == 1) return read(folded.front());
    if (!active_) return;
    before_ = now_;
    for (const char32_t character : folded) step<false>(character);
    for (size_t i = 0; i < elements_.size(); ++i) {
      if (before_[i] && elements_[i].kind == PatternElement::AnyOne) reach(now_, i + 1);
    }
  }

 private:
  template <bool isWhole>
  void step(char32_t character) {
    if (!active_) return;
    active_ = false;
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
    active_ = true;
    places[place] = 1;
    while (place < elements_.size() && elements_[place].kind == PatternElement::AnyRun) places[++place] = 1;
  }

  const std::vector<PatternElement>& elements_;
  std::vector<char> now_;
  std::vector<char> next_;
  std::vector<char> before_;
  bool active_ = false;  // some place is reached
};

// The first part of the text, of a size that can be composed and folded at once; what follows starts with a
// character that composes with nothing before it, as far as such a one comes soon.
std::string_view firstPiece(std::string_view bytes) {
  constexpr size_t kPiece = 64 << 10;
  if (bytes.size() <= kPiece) return bytes;
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const normalizer = unorm2_getNFCInstance(&error);
  const auto length = static_cast<int32_t>(std::min(bytes.size(), 2 * kPiece));
  int32_t end = kPiece;
  while (end < length && U8_IS_TRAIL(bytes[static_cast<size_t>(end)])) ++end;
  for (int32_t next = end; next < length; end = next) {
    UChar32 character = 0;
    U8_NEXT(bytes.data(), next, length, character);
    if (character >= 0 && unorm2_hasBoundaryBefore(normalizer, character)) break;
  }
  return bytes.substr(0, static_cast<size_t>(end));
}

// Reads text piece by piece, so that a long one takes no more memory than a short one.
class Reading {
 public:
  Reading(const std::vector<PatternElement>& elements, TextOptions options)
      : progress_(elements), options_(options) {}

  bool matches(std::string_view bytes) {
    progress_.startHere();
    while (!bytes.empty()) {
      const std::string_view piece = firstPiece(bytes);
      bytes.remove_prefix(piece.size());
      for (const char32_t character : composed(readableText(piece))) {
        if (endsBefore(character)) return true;
        read(character);
      }
    }
    return progress_.atEnd();
  }

 private:
  // Borders are found in the text before folding, which hides the change from lower to upper case.
  bool endsBefore(char32_t character) {
    if (!options_.wholeWords || !isBorder(last_, character)) return false;
    if (progress_.atEnd()) return true;
    progress_.startHere();
    return false;
  }

  void read(char32_t character) {
    if (character < 0x80) {
      const auto ascii = static_cast<char>(character);
      progress_.read(static_cast<char32_t>(options_.ignoreCase ? lowerAscii(ascii) : ascii));
      last_ = character;
      return;
    }
    progress_.read(foldCharacter(character, options_));
    if (!isMark(character)) last_ = character;
  }

  Progress progress_;
  const TextOptions options_;
  char32_t last_ = 0;  // that isn't a mark
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
  literal_ = !options.wholeWords && std::all_of(elements_.begin(), elements_.end(), isLiteral);
}

bool TextPattern::matches(std::string_view bytes) const {
  if (!options_.wholeWords && isAscii(bytes)) return matchesAscii(elements_, bytes, options_.ignoreCase);
  if (literal_) return equalLiterals(elements_, fold(readableText(bytes), options_));
  return Reading(elements_, options_).matches(bytes);
}

bool TextPattern::matchesEverything() const {
  return elements_.size() == 1 && elements_[0].kind == PatternElement::AnyRun;
}

}  // namespace standin::metadata
