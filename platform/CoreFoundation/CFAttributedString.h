#pragma once

#include "CFDictionary.h"
#include "CFString.h"

typedef const struct __CFAttributedString* CFAttributedStringRef;

CF_EXPORT CFTypeID CFAttributedStringGetTypeID(void);
CF_EXPORT CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef alloc, CFStringRef str,
                                                         CFDictionaryRef attributes);
CF_EXPORT CFStringRef CFAttributedStringGetString(CFAttributedStringRef aStr);
CF_EXPORT CFIndex CFAttributedStringGetLength(CFAttributedStringRef aStr);
CF_EXPORT CFDictionaryRef CFAttributedStringGetAttributes(CFAttributedStringRef aStr, CFIndex loc,
                                                          CFRange* effectiveRange);
