#pragma once

#include "CGBase.h"

typedef struct CGPSConverter* CGPSConverterRef;

CG_EXTERN CFTypeID CGPSConverterGetTypeID(void);
