#pragma once

#include "CTDefines.h"

typedef const struct __CTFontCollection* CTFontCollectionRef;

CT_EXPORT CFTypeID CTFontCollectionGetTypeID(void);
