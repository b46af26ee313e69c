// The encodings that ICU converts.
#pragma once

#include <CoreFoundation/CFString.h>
#include <unicode/ucnv.h>

namespace cf {

// Whether ICU converts the encoding. All that it does extend ASCII, and keep no state between characters.
bool isConvertedByICU(CFStringEncoding encoding);

// Kept for the life of the process; it stops at what it can't convert. Null for every other encoding, and
// without ICU's data.
UConverter* converterFor(CFStringEncoding encoding);

}  // namespace cf
