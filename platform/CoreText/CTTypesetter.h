#pragma once

#include "CTDefines.h"

typedef const struct __CTTypesetter* CTTypesetterRef;

CT_EXPORT CFTypeID CTTypesetterGetTypeID(void);
