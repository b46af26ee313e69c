#pragma once

#include "CGBase.h"

typedef struct __CGEventSource* CGEventSourceRef;

CG_EXTERN CFTypeID CGEventSourceGetTypeID(void);
