// Bytes to strings.
#pragma once

#include "standin/corefoundation/strings/string.h"

namespace cf {

// The string for the bytes, the caller's; null when they are malformed, the encoding isn't known, or there is
// no memory. A byte order mark of UTF-16 is understood in `external` bytes only.
CFStringRef decode(const UInt8* bytes, size_t length, CFStringEncoding encoding, bool external);
CFStringRef stringOfUTF8(std::string_view bytes);

}  // namespace cf
