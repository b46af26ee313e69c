#pragma once

#include "CFBase.h"

typedef const void* (*CFSetRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFSetReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFSetCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFSetEqualCallBack)(const void* value1, const void* value2);
typedef CFHashCode (*CFSetHashCallBack)(const void* value);

struct CFSetCallBacks {
  CFIndex version;
  CFSetRetainCallBack retain;
  CFSetReleaseCallBack release;
  CFSetCopyDescriptionCallBack copyDescription;
  CFSetEqualCallBack equal;
  CFSetHashCallBack hash;
};
static_assert(sizeof(CFSetCallBacks) == 24, "CFSetCallBacks");

typedef const struct __CFSet* CFSetRef;

CF_EXPORT const CFSetCallBacks kCFTypeSetCallBacks;

CF_EXPORT CFTypeID CFSetGetTypeID(void);
CF_EXPORT CFSetRef CFSetCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                               const CFSetCallBacks* callBacks);
