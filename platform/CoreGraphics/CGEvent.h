#pragma once

#include "CGBase.h"

typedef struct __CGEvent* CGEventRef;

CG_EXTERN CFTypeID CGEventGetTypeID(void);
