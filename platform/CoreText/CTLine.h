#pragma once

#include "CTDefines.h"

typedef const struct __CTLine* CTLineRef;

CT_EXPORT CFTypeID CTLineGetTypeID(void);
