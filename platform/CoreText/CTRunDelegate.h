#pragma once

#include "CTDefines.h"

typedef const struct __CTRunDelegate* CTRunDelegateRef;

// From macOS 10.7 on.
CT_EXPORT CFTypeID CTRunDelegateGetTypeID(void) WEAK_IMPORT_ATTRIBUTE;
