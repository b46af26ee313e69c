// The encodings that are known, and the tables of those with one byte for each character.
#pragma once

#include <CoreFoundation/CFString.h>

namespace cf {

bool isKnownEncoding(CFStringEncoding encoding);

// Whether a byte below 0x80 means the ASCII character in `encoding`, and one such byte one character.
bool extendsASCII(CFStringEncoding encoding);

// The upper 128 characters of a one-byte encoding, 0 where there is none; null for every other encoding.
const UniChar* upperHalf(CFStringEncoding encoding);
// The byte for a unit, or -1; `upper` is what upperHalf returned.
int singleByteFor(const UniChar* upper, UniChar unit);

}  // namespace cf
