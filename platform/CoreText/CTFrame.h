#pragma once

#include "CTDefines.h"

typedef const struct __CTFrame* CTFrameRef;

CT_EXPORT CFTypeID CTFrameGetTypeID(void);
