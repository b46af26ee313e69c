// Text of names and values, from bytes to characters.
//
// A name on disk is bytes. Where they are UTF-8 they are read so; a byte that isn't part of any character
// reads as a percent sign and two capital hexadecimal digits ("%FF"), so that every name can be shown and
// searched for. Shown text can't always be turned back into the bytes: whoever needs the file keeps
// the bytes.
#pragma once

#include <string>
#include <string_view>

namespace standin::metadata {

std::u32string readableText(std::string_view bytes);
std::u16string utf16(std::u32string_view text);
std::u32string fromUtf16(std::u16string_view text);  // a lone surrogate reads as U+FFFD
bool isAscii(std::string_view bytes);

}  // namespace standin::metadata
