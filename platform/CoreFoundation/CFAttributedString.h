#pragma once

#include "CFDictionary.h"
#include "CFString.h"

typedef const struct __CFAttributedString* CFAttributedStringRef;

CF_EXPORT CFTypeID CFAttributedStringGetTypeID(void);
CF_EXPORT CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef alloc, CFStringRef str,
                                                         CFDictionaryRef attributes);
