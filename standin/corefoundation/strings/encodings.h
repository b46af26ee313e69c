// The encodings that are known, and the tables of those with one byte for each character.
#pragma once

#include <CoreFoundation/CFString.h>

namespace cf {

bool isKnownEncoding(CFStringEncoding encoding);

// Whether text of bytes below 0x80 means the same in `encoding` as in ASCII.
bool extendsASCII(CFStringEncoding encoding);

// The upper 128 characters of a one-byte encoding that stands here, 0 where there is none; null for every
// other encoding.
const UniChar* upperHalf(CFStringEncoding encoding);
// The byte for a unit, or -1; `upper` is what upperHalf returned.
int singleByteFor(const UniChar* upper, UniChar unit);

}  // namespace cf
