// From any Core Foundation value to a host variant: the one place that decides how each type looks to host
// code.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new variant; the value is borrowed. Nil for null and kCFNull, and where the host makes nothing of the
// value.
Owned<REALobject> GetCFTypeAsVariant(CFTypeRef value);

// A new host dictionary of the converted pairs. Nil when the host makes none.
Owned<REALobject> CFDictionary2RBDictionary(CFDictionaryRef values);

// Stores one pair into the host dictionary that is the context. Nothing is stored for a null key or context.
// Whoever applies it forgets the dictionary afterwards (DictionaryScope).
void MyCFDictionaryApplierFunction(const void* key, const void* value, void* context);
