#pragma once

#include "CTDefines.h"

typedef const struct __CTRun* CTRunRef;

CT_EXPORT CFTypeID CTRunGetTypeID(void);
