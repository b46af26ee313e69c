#pragma once

#include "CFBase.h"

typedef const void* (*CFBagRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFBagReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFBagCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFBagEqualCallBack)(const void* value1, const void* value2);
typedef CFHashCode (*CFBagHashCallBack)(const void* value);

struct CFBagCallBacks {
  CFIndex version;
  CFBagRetainCallBack retain;
  CFBagReleaseCallBack release;
  CFBagCopyDescriptionCallBack copyDescription;
  CFBagEqualCallBack equal;
  CFBagHashCallBack hash;
};
static_assert(sizeof(CFBagCallBacks) == 24, "CFBagCallBacks");

typedef const struct __CFBag* CFBagRef;

CF_EXPORT const CFBagCallBacks kCFTypeBagCallBacks;

CF_EXPORT CFTypeID CFBagGetTypeID(void);
CF_EXPORT CFBagRef CFBagCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                               const CFBagCallBacks* callBacks);
