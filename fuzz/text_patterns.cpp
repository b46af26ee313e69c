// Text that queries compare with: a pattern and a text, with and without each modifier.
//
// The input: a byte, the pattern, a zero byte, the text. The byte's bits are the modifiers c, d and w; c and
// d once more, which a text that matches must do with these, too; whether the text stands for the pattern.
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/input.h"
#include "standin/coreservices/attributes/text.h"
#include "standin/coreservices/language/text_pattern.h"

namespace {

using standin::metadata::PatternElement;
using standin::metadata::TextOptions;
using standin::metadata::TextPattern;
using Elements = std::vector<PatternElement>;

PatternElement::Kind kindOf(char32_t character) {
  if (character == U'*') return PatternElement::AnyRun;
  return character == U'?' ? PatternElement::AnyOne : PatternElement::Literal;
}

Elements patternOf(std::string_view bytes) {
  Elements elements;
  bool isEscaped = false;
  for (const char32_t character : standin::metadata::readableText(bytes)) {
    if (character == U'\\' && !isEscaped) {
      isEscaped = true;
      continue;
    }
    elements.push_back({isEscaped ? PatternElement::Literal : kindOf(character), character});
    isEscaped = false;
  }
  return elements;
}

Elements literally(std::string_view bytes) {
  Elements elements;
  for (const char32_t character : standin::metadata::readableText(bytes)) {
    elements.push_back({PatternElement::Literal, character});
  }
  return elements;
}

TextOptions optionsOf(unsigned bits) {
  return {.ignoreCase = (bits & 1) != 0, .ignoreDiacritics = (bits & 2) != 0, .wholeWords = (bits & 4) != 0};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const unsigned bits = input.byte();
  const std::string_view written = input.text();
  const std::string_view text = input.rest();

  const bool isItself = (bits & 32) != 0;
  const Elements elements = isItself ? literally(text) : patternOf(written);
  const bool matches = TextPattern(elements, optionsOf(bits)).matches(text);
  fuzz::require(matches || !isItself, "text differs from itself");
  const unsigned more = bits >> 3 & 3;
  if (matches && more != 0) {
    fuzz::require(TextPattern(elements, optionsOf(bits | more)).matches(text), "ignoring more finds less");
  }
  return 0;
}
