#pragma once

#include "CGBase.h"

typedef struct CGColorSpace* CGColorSpaceRef;

CG_EXTERN CFTypeID CGColorSpaceGetTypeID(void);
CG_EXTERN CGColorSpaceRef CGColorSpaceRetain(CGColorSpaceRef space);
CG_EXTERN CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
