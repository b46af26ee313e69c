#pragma once

#include "CGBase.h"

typedef struct CGColor* CGColorRef;

CG_EXTERN CGColorRef CGColorCreateGenericRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha);
CG_EXTERN CFTypeID CGColorGetTypeID(void);
CG_EXTERN CGColorRef CGColorRetain(CGColorRef color);
CG_EXTERN size_t CGColorGetNumberOfComponents(CGColorRef color);
CG_EXTERN const CGFloat* CGColorGetComponents(CGColorRef color);
