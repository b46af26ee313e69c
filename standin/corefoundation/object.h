// What every object of this library is made of, and the checks that guard its functions.
//
// An object starts with a header of 8 bytes: its class entry and its reference count. A freed object keeps
// its memory for a while (quarantine.h); its class word then carries a mark, so that a late use is
// recognised.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

namespace cf {

inline constexpr CFTypeID kAllocatorType = 2;
inline constexpr CFTypeID kBagType = 6;
inline constexpr CFTypeID kStringType = 7;
inline constexpr CFTypeID kNullType = 16;
inline constexpr CFTypeID kSetType = 17;
inline constexpr CFTypeID kDictionaryType = 18;
inline constexpr CFTypeID kArrayType = 19;
inline constexpr CFTypeID kDataType = 20;
inline constexpr CFTypeID kBooleanType = 21;
inline constexpr CFTypeID kNumberType = 22;
inline constexpr CFTypeID kCharacterSetType = 23;
inline constexpr CFTypeID kErrorType = 27;
inline constexpr CFTypeID kURLType = 29;
inline constexpr CFTypeID kUUIDType = 39;
inline constexpr CFTypeID kTimeZoneType = 41;
inline constexpr CFTypeID kDateType = 42;
inline constexpr CFTypeID kFirstRegisteredType = 256;
inline constexpr CFTypeID kTypeLimit = 1024;

// Objects with this count are constants: never freed, never counted.
inline constexpr uint32_t kConstantCount = 0x7FFFFFFF;

struct ClassEntry {
  const CFRuntimeClass* cls;
  long* live;  // the ledger's line, looked up when the first object is made
  CFTypeID id;
  uint32_t spare;  // keeps the entries 16 bytes apart
};
static_assert(sizeof(ClassEntry) == 16, "ClassEntry");

extern std::array<ClassEntry, kTypeLimit> classTable;

struct Header {
  ClassEntry* isa;
  uint32_t count;
};
static_assert(sizeof(Header) == sizeof(CFRuntimeBase), "Header");

// Ends the process with a message that names the call, and the call of another library that it ran in.
[[noreturn]] void misuse(const char* call, const std::string& what);
// The same for a reference that isn't what `call` needs: says what it is instead.
[[noreturn]] void misuseOfReference(const char* call, CFTypeRef cf, const char* wanted);
[[noreturn]] void misuseOfType(const char* call, CFTypeRef cf, CFTypeID wanted);

// The class of any object; ends the process for null, garbage and freed objects.
ClassEntry* classOf(CFTypeRef cf, const char* call);

// T is one of this library's object structures.
template <class T>
const T* checked(const T* cf, const char* call) {
  if (cf == nullptr || (reinterpret_cast<uintptr_t>(cf) & 3) != 0 || cf->isa != &classTable[T::typeId]) {
    misuseOfType(call, cf, T::typeId);
  }
  return cf;
}
template <class T>
T* checked(T* cf, const char* call) {
  checked(static_cast<const T*>(cf), call);
  return cf;
}

// A new object of `size` bytes in all, zero-filled behind its header, with a count of 1; null when there is
// no memory. `init` of the class is not run.
Header* allocateObject(CFTypeID type, size_t size);
template <class T>
T* makeObject(size_t extra = 0) {
  return static_cast<T*>(allocateObject(T::typeId, sizeof(T) + extra));
}

// Whether a creator may take memory from `allocator`; ends the process when it is no allocator.
bool canAllocate(CFAllocatorRef allocator, const char* call);

// The functions behind CFRetain, CFRelease, CFEqual and CFHash, for the library's own use.
CFTypeRef retain(CFTypeRef cf, const char* call);
void release(CFTypeRef cf, const char* call);
bool equal(CFTypeRef a, CFTypeRef b, const char* call);
CFHashCode hash(CFTypeRef cf, const char* call);

CFHashCode hashBytes(const void* bytes, size_t length);
CFHashCode hashDouble(double value);

// While it lives, a function of somebody outside the stand-ins runs: its calls count. When the outermost call
// is that of another stand-in library, the function is that library's own, and nothing changes.
class OutsideCall {
 public:
  OutsideCall();
  ~OutsideCall();
  OutsideCall(const OutsideCall&) = delete;
  OutsideCall& operator=(const OutsideCall&) = delete;

 private:
  alignas(standin::Callout) unsigned char storage_[sizeof(standin::Callout)];
  bool open_;
};

}  // namespace cf
