// New host strings from bytes.
#pragma once

#include "owned.h"
#include "records.h"

// A new host string of `length` bytes in that CFStringEncoding. UTF-16 and UTF-32 text is stored as UTF-8,
// and text in MacRoman, Windows Latin 1 or an unknown encoding (kUnknownEncoding) that is all ASCII as ASCII.
// UTF-32 units above 0xFFFF are cut to their low 16 bits. Null for null data, for a length below 1 or from
// 2^31 on, and when the string can't be built or converted.
//
// Raises "OutOfMemoryException", with a null result, when the host reports that there is no memory.
Owned<REALstring> REALBuildUnicodeString(const void* data, int64_t length, uint32_t encoding);
