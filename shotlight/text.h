// Text as it is typed, shown and handed to the platform.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace shotlight {

// Nothing for text that is not valid UTF-8.
std::optional<std::u16string> utf16(const std::string& utf8);

std::string utf8(std::u16string_view units);

// How many columns of a terminal the UTF-8 text takes. Bytes that are no character count as one column.
size_t displayWidth(const std::string& text);

// One line that a terminal shows as it is: tab and newline become \t and \n; other control characters of
// ASCII and bytes that are no UTF-8, \xHH; other characters that break lines or turn the direction of
// writing, \uHHHH.
std::string escapeControls(const std::string& utf8);

}  // namespace shotlight
