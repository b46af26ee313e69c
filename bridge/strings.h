// Host strings and CFStrings: every text that crosses between host code and the platform.
//
// The conversions depend on the host's version and on the services that it offers. Where a service is missing
// the result is null. Only a lack of memory for a new host string raises (host/build_string.h).
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"
#include "host/services.h"

// The rest of RBString2CFString: the ways after the host's first answer.
Owned<CFStringRef> convertOtherwise(REALstring string);

// A new CFString. Null for the null string, and for bytes that are not text in the string's encoding.
//
// Without the host's own conversion the text ends at its first zero byte, except in UTF-16.
inline Owned<CFStringRef> RBString2CFString(REALstring string) {
  if (!string) return {};
  if (rbversion >= 2012.0) {
    auto text = adopt(REALCopyStringCFString(string, false));
    if (text) return text;
  }
  return convertOtherwise(string);
}

// A new host string in UTF-8. Null for null, for an empty CFString, and for one with unpaired surrogates.
Owned<REALstring> CFString2RBString(CFStringRef text);

// A new variant of the string, which may be null and is given back. Nil when the host makes none.
Owned<REALobject> variantOf(Owned<REALstring> string);

// Appends the strings of the CFArray to an empty host array of strings. Null elements are left out.
void AddStringArray(REALobject array, CFArrayRef strings);

// A new CFArray of the host array's strings. A null string, or one that can't be converted, becomes the empty
// CFString. Null for null, and when there is no memory.
Owned<CFMutableArrayRef> NewCFStringArray(REALobject array);
