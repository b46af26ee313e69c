#pragma once

#include "CFURL.h"

typedef struct __CFBundle* CFBundleRef;

CF_EXPORT CFTypeID CFBundleGetTypeID(void);
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
CF_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);
CF_EXPORT void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);
CF_EXPORT void* CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName);
