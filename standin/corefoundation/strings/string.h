// Strings: how they are stored, and making immutable ones.
//
// An immutable string is one block: ASCII text as bytes with a zero after them, all other text as UTF-16. A
// mutable string keeps UTF-16 in a block of its own.
//
// This room has strings and the constants of them, their encodings, comparison and normalisation. It includes
// the runtime and ICU.
#pragma once

#include <CoreFoundation/CFString.h>

#include <string_view>

#include "standin/corefoundation/runtime/object.h"

enum class StringKind : uint8_t { Narrow, Wide, Mutable };

struct __CFString : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kStringType;
  uint32_t length : 30;  // in UTF-16 units
  uint32_t kindBits : 2;

  StringKind kind() const { return static_cast<StringKind>(kindBits); }
};

struct MutableString : __CFString {
  UniChar* units;
  uint32_t capacity;
  uint32_t limit;  // the longest length allowed; 0: any
};

namespace cf {

inline constexpr size_t kMaxStringLength = 0x3FFFFFFF / sizeof(UniChar);

// A view of a string's text: exactly one of the two pointers is set. It is good until the string changes.
struct Text {
  const char* narrow;
  const UniChar* wide;
  size_t length;

  UniChar operator[](size_t i) const { return narrow ? static_cast<unsigned char>(narrow[i]) : wide[i]; }
};

Text textOf(CFStringRef s);

// New objects with a count of 1, or null when there is no memory.
// The bytes must be ASCII.
CFStringRef makeNarrowString(const char* bytes, size_t length);
inline CFStringRef makeNarrowString(std::string_view text) {
  return makeNarrowString(text.data(), text.size());
}
// Stored as bytes when all units are ASCII.
CFStringRef makeString(const UniChar* units, size_t length);

// Ends the process unless the range lies within the length.
void checkRange(CFRange range, size_t length, const char* call);

bool isASCII(const void* bytes, size_t length);
bool isASCII(const UniChar* units, size_t length);

}  // namespace cf
