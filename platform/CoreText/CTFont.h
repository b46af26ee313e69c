#pragma once

#include "CTDefines.h"

typedef const struct __CTFont* CTFontRef;

CT_EXPORT CFTypeID CTFontGetTypeID(void);
