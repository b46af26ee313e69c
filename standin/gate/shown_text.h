// Text from outside (names of files, arguments, messages of other programs) as a terminal may be given it.
// Libraries that link nothing of this folder use it, too: everything is in the header.
#pragma once

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace standin {

// A character of UTF-8 text, or a byte of it that is part of none.
struct Character {
  char32_t code;
  size_t length;  // in bytes
  bool valid;     // false: one byte that is no UTF-8, and `code` is its value
};

inline Character characterAt(std::string_view text, size_t index) {
  const std::string_view rest = text.substr(index, U8_MAX_LENGTH);
  const auto length = static_cast<int32_t>(rest.size());
  int32_t end = 0;
  UChar32 code = 0;
  U8_NEXT(rest.data(), end, length, code);
  if (code >= 0) return {static_cast<char32_t>(code), static_cast<size_t>(end), true};
  return {static_cast<unsigned char>(rest.front()), 1, false};
}

// What is never printed as it is: bytes that are no UTF-8, control characters (a terminal obeys them), what
// separates lines and paragraphs, and what turns the direction of writing.
inline bool disturbs(const Character& character) {
  const char32_t code = character.code;
  return !character.valid || code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x061C ||
         code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

// One line that a terminal shows as it is: tab and newline become \t and \n, other control characters of
// ASCII and bytes that are no UTF-8 \xHH, whatever else disturbs \uHHHH.
inline std::string shownText(std::string_view text) {
  std::string shown;
  for (size_t i = 0; i < text.size();) {
    const Character character = characterAt(text, i);
    char escape[8];
    if (!disturbs(character)) {
      shown.append(text, i, character.length);
    } else if (character.code == U'\t' || character.code == U'\n') {
      shown += character.code == U'\t' ? "\\t" : "\\n";
    } else {
      const bool isByte = !character.valid || character.code < 0x80;
      std::snprintf(escape, sizeof escape, isByte ? "\\x%02X" : "\\u%04X",
                    static_cast<unsigned>(character.code));
      shown += escape;
    }
    i += character.length;
  }
  return shown;
}

}  // namespace standin
