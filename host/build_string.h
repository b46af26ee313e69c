// New host strings from bytes.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <string.h>
#include <new>

#include "owned.h"
#include "services.h"

// A new host string of `length` bytes in that CFStringEncoding. UTF-16 and UTF-32 text is stored as UTF-8,
// and text in MacRoman, Windows Latin 1 or an unknown encoding (kUnknownEncoding) that is all ASCII as ASCII.
// UTF-32 units above 0xFFFF are cut to their low 16 bits. Null for null data, for a length below 1 or from
// 2^31 on, and when the string can't be built or converted.
//
// Raises "OutOfMemoryException", with a null result, when the host reports that there is no memory.
Owned<REALstring> REALBuildUnicodeString(const void* data, int64_t length, uint32_t encoding);

// Raises that "OutOfMemoryException". Does nothing while one is being raised.
[[gnu::noinline, gnu::cold]] void raiseOutOfMemory();

// A new host string of bytes whose encoding is kept. Null when the host can't build it. What the host throws
// passes through, std::bad_alloc too.
inline Owned<REALstring> buildPlainString(const char* bytes, int32_t length, uint32_t encoding) {
  auto string = adopt(REALBuildString(bytes, length));
  if (string) REALSetStringEncoding(string.get(), encoding);
  return string;
}

// REALBuildUnicodeString of a text in UTF-8 that ends in a zero byte, without the choice by encoding. Inline,
// as most strings come this way.
inline Owned<REALstring> buildUTF8String(const char* text) {
  const auto length = static_cast<int32_t>(strlen(text));  // negative from 2^31 on
  if (length <= 0) return {};
  try {
    return buildPlainString(text, length, kCFStringEncodingUTF8);
  } catch (const std::bad_alloc&) {
    raiseOutOfMemory();
    return {};
  }
}
