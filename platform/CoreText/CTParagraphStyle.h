#pragma once

#include "CTDefines.h"

typedef const struct __CTParagraphStyle* CTParagraphStyleRef;

CT_EXPORT CFTypeID CTParagraphStyleGetTypeID(void);
