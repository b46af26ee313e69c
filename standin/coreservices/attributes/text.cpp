#include "standin/coreservices/attributes/text.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace standin::metadata {
namespace {

void appendEscaped(std::u32string& text, unsigned char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text += U'%';
  text += static_cast<char32_t>(kDigits[byte >> 4]);
  text += static_cast<char32_t>(kDigits[byte & 15]);
}

}  // namespace

std::u32string readableText(std::string_view bytes) {
  std::u32string text;
  text.reserve(bytes.size());
  const auto length = static_cast<int32_t>(bytes.size());
  for (int32_t position = 0; position < length;) {
    const int32_t start = position;
    UChar32 character = 0;
    U8_NEXT(bytes.data(), position, length, character);
    if (character >= 0) {
      text += static_cast<char32_t>(character);
    } else {
      for (int32_t i = start; i < position; ++i) appendEscaped(text, static_cast<unsigned char>(bytes[i]));
    }
  }
  return text;
}

std::u16string utf16(std::u32string_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (const char32_t character : text) {
    if (U_IS_BMP(character)) {
      units += static_cast<char16_t>(character);
    } else {
      units += static_cast<char16_t>(U16_LEAD(character));
      units += static_cast<char16_t>(U16_TRAIL(character));
    }
  }
  return units;
}

std::u32string fromUtf16(std::u16string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (!U16_IS_SURROGATE(unit)) {
      characters += unit;
    } else if (U16_IS_LEAD(unit) && i + 1 < text.size() && U16_IS_TRAIL(text[i + 1])) {
      characters += static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text[i + 1]));
      ++i;
    } else {
      characters += U'\uFFFD';
    }
  }
  return characters;
}

bool isAscii(std::string_view bytes) {
  // Several bytes at once, the rest one by one.
  size_t i = 0;
  for (uint64_t some = 0; i + sizeof some <= bytes.size(); i += sizeof some) {
    std::memcpy(&some, bytes.data() + i, sizeof some);
    if ((some & 0x8080808080808080) != 0) return false;
  }
  return std::all_of(bytes.begin() + static_cast<ptrdiff_t>(i), bytes.end(),
                     [](char byte) { return (byte & 0x80) == 0; });
}

}  // namespace standin::metadata
