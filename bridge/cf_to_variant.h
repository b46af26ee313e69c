// bridge/ converts between host values and Core Foundation values: any value (here and in variant_to_cf.h),
// strings, dates, folder items. It includes host/ and the platform's headers, and nothing of item/ and
// query/, which include it.
//
// From any Core Foundation value to a host variant: the one place that decides how each type looks to host
// code.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new variant; the value is borrowed. Nil for null and kCFNull, and when the host makes no variant.
Owned<REALobject> GetCFTypeAsVariant(CFTypeRef value);

// A new host dictionary of the converted pairs. Nil when the host makes none.
Owned<REALobject> CFDictionary2RBDictionary(CFDictionaryRef values);

// Stores one pair into the host dictionary that is the context. Nothing is stored for a null key or context.
// Where it is applied, a DictionaryScope must be alive.
void MyCFDictionaryApplierFunction(const void* key, const void* value, void* context);
