#pragma once

#include "CTDefines.h"

typedef const struct __CTRunDelegate* CTRunDelegateRef;

// From macOS 10.7 on; but not declared weak.
CT_EXPORT CFTypeID CTRunDelegateGetTypeID(void);
