#include "text_pattern.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>

#include "text.h"

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

// Folded text, and for each place between two of its characters (the ends included) whether a word may start
// or end there. Borders are found in the text before folding, which hides the change from lower to upper
// case.
struct Folded {
  std::u32string text;
  std::vector<char> border;
};

bool isBorder(std::u32string_view text, size_t position) {
  if (position == 0 || position >= text.size()) return true;
  if (isMark(text[position])) return false;  // belongs to the letter before it
  size_t before = position - 1;
  while (before > 0 && isMark(text[before])) --before;
  const auto left = static_cast<UChar32>(text[before]);
  const auto right = static_cast<UChar32>(text[position]);
  if (!u_isalpha(left) || !u_isalpha(right)) return true;
  return u_islower(left) && u_isupper(right);
}

Folded fold(std::u32string_view text, TextOptions options) {
  const std::u32string whole = composed(text);
  Folded result;
  result.text.reserve(whole.size());
  for (size_t i = 0; i < whole.size(); ++i) {
    const std::u32string characters = foldCharacter(whole[i], options);
    if (options.wholeWords && !characters.empty()) {
      result.border.push_back(isBorder(whole, i));
      result.border.resize(result.border.size() + characters.size() - 1, 0);
    }
    result.text += characters;
  }
  if (options.wholeWords) result.border.push_back(1);
  return result;
}

// All places of the pattern that the text read so far may have reached, advanced character by character: the
// time is bounded by pattern times text, whatever the wildcards.
class Progress {
 public:
  explicit Progress(const std::vector<PatternElement>& elements)
      : elements_(elements), now_(elements.size() + 1), next_(elements.size() + 1) {}

  void startHere() { reach(now_, 0); }
  bool atEnd() const { return now_.back() != 0; }

  void read(char32_t character) {
    std::fill(next_.begin(), next_.end(), 0);
    for (size_t i = 0; i < elements_.size(); ++i) {
      if (!now_[i]) continue;
      const PatternElement& element = elements_[i];
      if (element.kind == PatternElement::AnyRun) {
        reach(next_, i);
      } else if (element.kind == PatternElement::AnyOne || element.character == character) {
        reach(next_, i + 1);
      }
    }
    now_.swap(next_);
  }

 private:
  // A run may be empty, so reaching its start reaches what follows it too.
  void reach(std::vector<char>& places, size_t place) {
    places[place] = 1;
    while (place < elements_.size() && elements_[place].kind == PatternElement::AnyRun) places[++place] = 1;
  }

  const std::vector<PatternElement>& elements_;
  std::vector<char> now_;
  std::vector<char> next_;
};

bool matchWhole(const std::vector<PatternElement>& elements, std::u32string_view text) {
  Progress progress(elements);
  progress.startHere();
  for (const char32_t character : text) progress.read(character);
  return progress.atEnd();
}

bool matchWords(const std::vector<PatternElement>& elements, const Folded& folded) {
  Progress progress(elements);
  for (size_t i = 0; i <= folded.text.size(); ++i) {
    if (folded.border[i]) progress.startHere();
    if (folded.border[i] && progress.atEnd()) return true;
    if (i < folded.text.size()) progress.read(folded.text[i]);
  }
  return false;
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
  TextOptions folding = options;
  folding.wholeWords = false;
  std::u32string run;
  const auto endRun = [&] {
    for (const char32_t character : fold(run, folding).text) {
      elements_.push_back({PatternElement::Literal, character});
    }
    run.clear();
  };
  for (const PatternElement& element : elements) {
    if (element.kind == PatternElement::Literal) {
      run += element.character;
    } else {
      endRun();
      elements_.push_back(element);
    }
  }
  endRun();
  const auto isLiteral = [](const PatternElement& e) { return e.kind == PatternElement::Literal; };
  literal_ = !options.wholeWords && std::all_of(elements_.begin(), elements_.end(), isLiteral);
  ascii_ = literal_ && std::all_of(elements_.begin(), elements_.end(),
                                   [](const PatternElement& e) { return e.character < 0x80; });
  if (!ascii_) return;
  for (const PatternElement& element : elements_) asciiLiteral_ += static_cast<char>(element.character);
}

bool TextPattern::matches(std::string_view bytes) const {
  if (ascii_ && isAscii(bytes)) {
    if (!options_.ignoreCase) return bytes == asciiLiteral_;
    return std::equal(bytes.begin(), bytes.end(), asciiLiteral_.begin(), asciiLiteral_.end(),
                      [](char text, char pattern) { return lowerAscii(text) == pattern; });
  }
  const Folded folded = fold(readableText(bytes), options_);
  if (literal_) return equalLiterals(elements_, folded.text);
  return options_.wholeWords ? matchWords(elements_, folded) : matchWhole(elements_, folded.text);
}

bool TextPattern::matchesEverything() const {
  return elements_.size() == 1 && elements_[0].kind == PatternElement::AnyRun;
}

}  // namespace standin::metadata
