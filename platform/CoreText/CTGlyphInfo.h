#pragma once

#include "CTDefines.h"

typedef const struct __CTGlyphInfo* CTGlyphInfoRef;

CT_EXPORT CFTypeID CTGlyphInfoGetTypeID(void);
