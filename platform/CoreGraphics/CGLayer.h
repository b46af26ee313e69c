#pragma once

#include "CGBase.h"

typedef struct CGLayer* CGLayerRef;

CG_EXTERN CFTypeID CGLayerGetTypeID(void);
CG_EXTERN CGLayerRef CGLayerRetain(CGLayerRef layer);
