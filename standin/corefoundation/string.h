// Strings: how they are stored, and the functions on which the files of this subject share.
//
// An immutable string is one block: ASCII text as bytes with a zero after them, all other text as UTF-16. A
// mutable string keeps UTF-16 in a block of its own.
#pragma once

#include <CoreFoundation/CFString.h>

#include <string_view>

#include "standin/corefoundation/object.h"

enum class StringKind : uint8_t { Narrow, Wide, Mutable };

struct __CFString : cf::Header {
  static constexpr CFTypeID typeId = cf::kStringType;
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

// A view of a string's text: exactly one of the two pointers is set.
struct Text {
  const char* narrow;
  const UniChar* wide;
  size_t length;

  UniChar operator[](size_t i) const { return narrow ? static_cast<unsigned char>(narrow[i]) : wide[i]; }
};

inline char* narrowBytes(__CFString* s) {
  return reinterpret_cast<char*>(s + 1);
}
inline UniChar* wideUnits(__CFString* s) {
  return reinterpret_cast<UniChar*>(s + 1);
}

Text textOf(CFStringRef s);

// New objects with a count of 1, or null when there is no memory.
// The bytes must be ASCII.
CFStringRef makeNarrowString(const char* bytes, size_t length);
inline CFStringRef makeNarrowString(std::string_view text) {
  return makeNarrowString(text.data(), text.size());
}
// Stored as bytes when all units are ASCII.
CFStringRef makeString(const UniChar* units, size_t length);
// An uninitialised wide string to be filled by the caller.
__CFString* makeWideString(size_t length);

// Ends the process unless `s` is a mutable string.
MutableString* checkedMutable(CFMutableStringRef s, const char* call);
// Replaces the text of `s`; false (and no change) when there is no memory.
bool setUnits(MutableString* s, const UniChar* units, size_t length, const char* call);

// Ends the process unless the range lies within the length.
void checkRange(CFRange range, size_t length, const char* call);

bool isASCII(const void* bytes, size_t length);
bool isASCII(const UniChar* units, size_t length);

// Whether a byte below 0x80 means the ASCII character in `encoding`, and one such byte one character.
bool extendsASCII(CFStringEncoding encoding);

// The string for the bytes, or null: malformed, or an encoding that isn't known, or no memory.
CFStringRef decode(const UInt8* bytes, size_t length, CFStringEncoding encoding, bool external);

// The upper 128 characters of a one-byte encoding, 0 where there is none; null for every other encoding.
const UniChar* upperHalf(CFStringEncoding encoding);
// The byte for a unit, or -1; `upper` is what upperHalf returned.
int singleByteFor(const UniChar* upper, UniChar unit);

struct Encoded {
  size_t units;  // how many units of the text were converted
  size_t bytes;  // how many bytes that took
};
// Writes the text's bytes to `out`, at most `room` of them; `out` may be null to measure. A unit that has no
// form in the encoding becomes `lossByte`, or ends the conversion when that is 0. An encoding that isn't
// known converts nothing.
Encoded encode(Text text, CFStringEncoding encoding, UInt8 lossByte, bool external, UInt8* out, size_t room);

bool isKnownEncoding(CFStringEncoding encoding);

}  // namespace cf
