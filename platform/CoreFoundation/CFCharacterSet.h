#pragma once

#include "CFBase.h"

typedef const struct __CFCharacterSet* CFCharacterSetRef;

CF_EXPORT CFTypeID CFCharacterSetGetTypeID(void);
CF_EXPORT CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange theRange);
