// Text as it is typed, shown and handed to the platform.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace shotlight {

// Has the C library take characters of more than a byte for what they are in UTF-8: as wide as they are, and
// as one in a pattern. Reading its tables takes a moment that most commands need not spend. False where it
// can't.
bool knowCharacters();

// Where the first byte is that is part of no character of UTF-8; the size of the text where there is none.
size_t endOfValid(std::string_view text);

// Nothing for text that is not valid UTF-8.
std::optional<std::u16string> utf16(const std::string& utf8);

std::string utf8(std::u16string_view units);

// How many columns of a terminal the UTF-8 text takes. Bytes that are no character count as one column.
size_t displayWidth(std::string_view text);

enum class Cut { end, middle };

// As much of the text as fits in that many columns, with an ellipsis for what was cut out. `text` has nothing
// in it that disturbs a terminal.
std::string cutToWidth(const std::string& text, size_t width, Cut cut);

enum class Reader { person, program };

// The text itself where it can be read as one line; otherwise, and where it begins with $', a word that
// shells read as the text: $'...', with \t, \n, \', \\, and three octal digits for every other byte of what
// disturbs (standin::disturbs). A program also reads bytes that are no UTF-8, unless they are control
// characters of another encoding (0x80 to 0x9F). People don't see a space at an end.
std::string shellWord(std::string_view text, Reader reader);

// A file's name in a message: in single quotes, or as shellWord has it.
std::string quotedName(std::string_view name);

}  // namespace shotlight
