#pragma once

#include "CGBase.h"

typedef struct CGDataProvider* CGDataProviderRef;

CG_EXTERN CFTypeID CGDataProviderGetTypeID(void);
CG_EXTERN CGDataProviderRef CGDataProviderRetain(CGDataProviderRef provider);
