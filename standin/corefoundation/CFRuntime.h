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

// Objects of a class without `equal` are equal to themselves only.
struct CFRuntimeClass {
  CFIndex version = 0;
  const char* className = nullptr;
  void (*init)(CFTypeRef cf) = nullptr;
  CFTypeRef (*copy)(CFAllocatorRef allocator, CFTypeRef cf) = nullptr;
  void (*finalize)(CFTypeRef cf) = nullptr;  // sees a retain count of 1; the memory is freed after it
  Boolean (*equal)(CFTypeRef cf1, CFTypeRef cf2) = nullptr;
  CFHashCode (*hash)(CFTypeRef cf) = nullptr;
  CFStringRef (*copyFormattingDesc)(CFTypeRef cf, const void* formatOptions) = nullptr;
  CFStringRef (*copyDebugDesc)(CFTypeRef cf) = nullptr;
  void (*reclaim)(CFTypeRef cf) = nullptr;
  uint32_t (*refcount)(intptr_t op, CFTypeRef cf) = nullptr;
};
static_assert(sizeof(CFRuntimeClass) == 44, "CFRuntimeClass");

// Keeps the pointer. Ids from 256 up; 0 on failure.
CF_EXPORT CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* cls);

// `extraBytes` lie beyond the 8-byte CFRuntimeBase and are zero-filled; `init` runs last, with a count of 1.
// The object is the caller's. Null when there is no memory.
CF_EXPORT CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                             unsigned char* category);
