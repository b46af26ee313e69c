#pragma once

#include "CGBase.h"

typedef struct CGDataConsumer* CGDataConsumerRef;

CG_EXTERN CFTypeID CGDataConsumerGetTypeID(void);
CG_EXTERN CGDataConsumerRef CGDataConsumerRetain(CGDataConsumerRef consumer);
