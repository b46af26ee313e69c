#pragma once

#include "CGBase.h"

typedef struct CGContext* CGContextRef;

CG_EXTERN CFTypeID CGContextGetTypeID(void);
CG_EXTERN CGContextRef CGContextRetain(CGContextRef c);
