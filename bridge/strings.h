// Host strings and CFStrings: every text that crosses between host code and the platform.
//
// The conversions choose by the host's version and by which services it offers. Where a service is missing
// the result is null (or false); only REALBuildUnicodeString raises.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"
#include "host/records.h"

// A new CFString. Null for the null string, and for bytes that are not text in the string's encoding.
//
// Without the host's own conversion the text ends at its first zero byte, except in UTF-16.
Owned<CFStringRef> RBString2CFString(REALstring string);

// A new host string in UTF-8. Null for null, for an empty CFString, and for one with unpaired surrogates.
Owned<REALstring> CFString2RBString(CFStringRef text);

// A new host string of `length` bytes in that CFStringEncoding; UTF-16 and UTF-32 text is stored as UTF-8,
// and ASCII text in MacRoman, Windows Latin 1 or an unknown encoding (0xFFFF) as ASCII. UTF-32 units above
// 0xFFFF are cut to their low 16 bits. Null for null data, and for a length below 1 or of 2^31 or more.
//
// Raises "OutOfMemoryException", with a null result, when the host reports that there is no memory.
Owned<REALstring> REALBuildUnicodeString(const void* data, int64_t length, uint32_t encoding);

// A new variant of the string, which is taken over and may be null. Nil when the host makes none.
Owned<REALobject> variantOf(Owned<REALstring> string);

// Appends the strings of the CFArray to an empty host array of strings. Null elements are left out.
void AddStringArray(REALobject array, CFArrayRef strings);

// A new CFArray of the host array's strings, a null one as the empty CFString. Null for null, and when there
// is no memory.
Owned<CFMutableArrayRef> NewCFStringArray(REALobject array);
