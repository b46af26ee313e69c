#pragma once

#include "CFRunLoop.h"

typedef int CFFileDescriptorNativeDescriptor;
typedef struct __CFFileDescriptor* CFFileDescriptorRef;
typedef void (*CFFileDescriptorCallBack)(CFFileDescriptorRef f, CFOptionFlags callBackTypes, void* info);

enum { kCFFileDescriptorReadCallBack = 1, kCFFileDescriptorWriteCallBack = 2 };

struct CFFileDescriptorContext {
  CFIndex version;  // 0
  void* info;
  void* (*retain)(void* info);
  void (*release)(void* info);
  CFStringRef (*copyDescription)(void* info);
};
static_assert(sizeof(CFFileDescriptorContext) == 20, "CFFileDescriptorContext");

CF_EXPORT CFTypeID CFFileDescriptorGetTypeID(void);
CF_EXPORT CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef allocator,
                                                     CFFileDescriptorNativeDescriptor fd,
                                                     Boolean closeOnInvalidate,
                                                     CFFileDescriptorCallBack callout,
                                                     const CFFileDescriptorContext* context);
// Callbacks are called once and have to be enabled again.
CF_EXPORT void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes);
CF_EXPORT void CFFileDescriptorInvalidate(CFFileDescriptorRef f);
CF_EXPORT CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef allocator,
                                                                 CFFileDescriptorRef f, CFIndex order);
