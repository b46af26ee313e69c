// Non-lossy ASCII: all text in ASCII, with "\\" for the backslash, "\ooo" (octal) for the other characters up
// to U+00FF, and "\uXXXX" for the other units.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string_view>

namespace cf {

inline constexpr size_t kLongestNonLossyUnit = 6;

// Takes one unit off the front of `rest`. A backslash that starts none of the forms stands for itself; -1 for
// a byte beyond ASCII.
int32_t takeNonLossyUnit(std::string_view& rest);

// Writes the form of one unit, and returns its length.
size_t putNonLossyUnit(UniChar unit, UInt8* out);

}  // namespace cf
