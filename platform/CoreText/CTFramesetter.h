#pragma once

#include "CTDefines.h"

typedef const struct __CTFramesetter* CTFramesetterRef;

CT_EXPORT CFTypeID CTFramesetterGetTypeID(void);
