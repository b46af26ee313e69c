// Texts of programs: their characters, whatever the encoding.
#pragma once

#include <string>
#include <string_view>

#include "standin/host/value.h"

namespace standin::host {

// In UTF-8; the bytes themselves where they are no text of their encoding.
std::string utf8Of(const Value& text);
// Bytes that are no text of their encoding count as MacRoman.
std::u32string charactersOf(const Value& text);
Value textOf(std::u32string_view characters);
// In UTF-8, or, where they are none, of no known encoding.
Value textOfBytes(const std::string& bytes);
Value joined(const Value& one, const Value& other);

// Below 0, 0 or above it, whatever the letters' case.
int compareTexts(const Value& one, const Value& other);
std::u32string folded(std::u32string characters);

}  // namespace standin::host
