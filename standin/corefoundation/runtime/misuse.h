// The checks that guard the library's functions: misuse ends the process with a message.
#pragma once

#include <string>

#include "standin/corefoundation/runtime/class_table.h"

namespace cf {

// Ends the process with a message that names the call, and the call of another library that it ran in.
[[noreturn]] void misuse(const char* call, const std::string& what);
// The same for a reference that isn't what `call` needs: says what it is instead.
[[noreturn]] void misuseOfReference(const char* call, CFTypeRef cf, const char* wanted);
[[noreturn]] void misuseOfType(const char* call, CFTypeRef cf, CFTypeID wanted);

// Ends the process for a length below 0, and for null where the length says that there is something. `what`
// is what lies there: "bytes".
void checkBuffer(const void* buffer, CFIndex length, const char* what, const char* call);

// The class of any object; ends the process for null, garbage and freed objects.
inline ClassEntry* classOf(CFTypeRef cf, const char* call) {
  if (cf != nullptr && (reinterpret_cast<uintptr_t>(cf) & 3) == 0) {
    ClassEntry* const entry = static_cast<const Header*>(cf)->isa;
    if (findEntry(reinterpret_cast<uintptr_t>(entry))) return entry;
  }
  misuseOfReference(call, cf, "a living object");
}

// T is one of this library's object structures.
template <class T>
const T* checked(const T* cf, const char* call) {
  if (cf == nullptr || (reinterpret_cast<uintptr_t>(cf) & 3) != 0 || cf->isa != &classTable[T::kTypeId]) {
    misuseOfType(call, cf, T::kTypeId);
  }
  return cf;
}
template <class T>
T* checked(T* cf, const char* call) {
  checked(static_cast<const T*>(cf), call);
  return cf;
}

}  // namespace cf
