// Mutable strings, for the functions that change one.
#pragma once

#include "standin/corefoundation/strings/string.h"

namespace cf {

// Ends the process unless `s` is a mutable string.
MutableString* checkedMutable(CFMutableStringRef s, const char* call);
// Replaces the text of `s`; false (and no change) when there is no memory.
bool setUnits(MutableString* s, const UniChar* units, size_t length, const char* call);

}  // namespace cf
