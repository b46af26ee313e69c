// Objects: making, owning and comparing them.
//
// An object starts with a header of 8 bytes: its class entry and its reference count. A freed object keeps
// its memory for a while (quarantine.h); its class word then carries a mark, so that a late use is
// recognised.
//
// This room has what objects of every class need: their layout and owners, the table of classes, the checks.
// All other rooms of the library stand on it; it includes none of them, nothing but the gate and the public
// headers.
#pragma once

#include <cstddef>

#include "standin/corefoundation/runtime/class_table.h"
#include "standin/corefoundation/runtime/misuse.h"
#include "standin/gate/gate.h"

namespace cf {

// A new object of `size` bytes in all, zero-filled behind its header, with a count of 1; null when there is
// no memory. `init` of the class is not run.
Header* allocateObject(CFTypeID type, size_t size);
template <class T>
T* makeObject(size_t extra = 0) {
  return static_cast<T*>(allocateObject(T::kTypeId, sizeof(T) + extra));
}

// The functions behind CFRetain, CFRelease, CFEqual and CFHash, for the library's own use.
CFTypeRef retain(CFTypeRef cf, const char* call);
void release(CFTypeRef cf, const char* call);
bool equal(CFTypeRef a, CFTypeRef b, const char* call);
CFHashCode hash(CFTypeRef cf, const char* call);

CFHashCode hashBytes(const void* bytes, size_t length);
CFHashCode hashDouble(double value);

}  // namespace cf
