#pragma once

#include "CGBase.h"

typedef const struct CGPath* CGPathRef;
typedef struct CGPath* CGMutablePathRef;

CG_EXTERN CFTypeID CGPathGetTypeID(void);
CG_EXTERN CGPathRef CGPathRetain(CGPathRef path);
CG_EXTERN CGMutablePathRef CGPathCreateMutable(void);
