// Strings to bytes.
#pragma once

#include <optional>
#include <string>

#include "standin/corefoundation/strings/string.h"

namespace cf {

struct Encoded {
  size_t units;  // how many units of the text were converted
  size_t bytes;  // how many bytes that took
};
// Writes the text's bytes to `out`, at most `room` of them; `out` may be null to measure. A unit that has no
// form in the encoding becomes `lossByte`, or ends the conversion when that is 0. An encoding that isn't
// known converts nothing.
Encoded encode(Text text, CFStringEncoding encoding, UInt8 lossByte, bool external, UInt8* out, size_t room);

// The text in UTF-8; nothing when it holds an unpaired surrogate.
std::optional<std::string> utf8Of(Text text);

}  // namespace cf
