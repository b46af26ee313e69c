// Objects of the classes that this library registers with Core Foundation's runtime.
#pragma once

#include "standin/corefoundation/CFRuntime.h"

namespace standin {

// A new object of a registered type, the caller's; null when there is no memory. Object begins with a
// CFRuntimeBase, and all that follows is zero.
template <typename Object>
Object* makeObject(CFAllocatorRef allocator, CFTypeID type) {
  const CFIndex extraBytes = sizeof(Object) - sizeof(CFRuntimeBase);
  return const_cast<Object*>(
      static_cast<const Object*>(_CFRuntimeCreateInstance(allocator, type, extraBytes, nullptr)));
}

// Ends the process in the name of `call` unless `cf` is an object of that type; `what` is the word for one.
void checkObject(const char* call, CFTypeRef cf, CFTypeID type, const char* what);

}  // namespace standin
