#pragma once

#include "CGBase.h"

typedef struct CGFont* CGFontRef;

CG_EXTERN CFTypeID CGFontGetTypeID(void);
CG_EXTERN CGFontRef CGFontRetain(CGFontRef font);
