// Registration of further Core Foundation classes with the runtime, as Core Foundation itself declares it. It
// is all that the other stand-in libraries need beyond the public functions to make objects of types of their
// own.
#pragma once

#include <CoreFoundation/CFBase.h>

struct CFRuntimeBase {
  uintptr_t isa;
  uint8_t info[4];
};
static_assert(sizeof(CFRuntimeBase) == 8, "CFRuntimeBase");

struct CFRuntimeClass {
  CFIndex version;  // 0
  const char* className;
  void (*init)(CFTypeRef cf);
  CFTypeRef (*copy)(CFAllocatorRef allocator, CFTypeRef cf);
  void (*finalize)(CFTypeRef cf);  // sees a retain count of 1; the memory is freed after it
  Boolean (*equal)(CFTypeRef cf1, CFTypeRef cf2);
  CFHashCode (*hash)(CFTypeRef cf);
  CFStringRef (*copyFormattingDesc)(CFTypeRef cf, const void* formatOptions);
  CFStringRef (*copyDebugDesc)(CFTypeRef cf);
  void (*reclaim)(CFTypeRef cf);
  uint32_t (*refcount)(intptr_t op, CFTypeRef cf);
};
static_assert(sizeof(CFRuntimeClass) == 44, "CFRuntimeClass");

// Keeps the pointer. Ids from 256 up; 0 on failure.
CF_EXPORT CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* cls);

// `extraBytes` lie beyond the 8-byte CFRuntimeBase and are zero-filled; `init` runs last, with a count of 1.
// The object is the caller's. Null when there is no memory.
CF_EXPORT CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                             unsigned char* category);
