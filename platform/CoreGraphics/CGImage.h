#pragma once

#include "CGBase.h"

typedef struct CGImage* CGImageRef;

CG_EXTERN CFTypeID CGImageGetTypeID(void);
CG_EXTERN CGImageRef CGImageRetain(CGImageRef image);
