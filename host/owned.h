// Ownership of references. Every reference that the plug-in must give back is held by an Owned, which gives
// it back at the end of its scope, however that is left. `adopt` takes over a reference that came with
// ownership (from Create, Copy, or a host service that returns a handle), `retain` takes an additional one,
// and `leak` hands the reference over to the caller.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stdlib.h>

#include "services.h"

// Core Foundation references
template <typename Reference>
struct Ownership {
  static Reference retain(Reference reference) {
    return static_cast<Reference>(const_cast<void*>(CFRetain(reference)));
  }
  static void release(Reference reference) { CFRelease(reference); }
};

// Null on a host without the service: the handle is not locked then, and must not be unlocked. Not inlined,
// so that the usual way stays short where this isn't called.
template <typename Handle>
[[gnu::noinline]] Handle lockWith(Entry<void(Handle)>& service, Handle handle) {
  const auto lock = service.function();
  if (lock) lock(handle);
  return lock ? handle : nullptr;
}

template <>
struct Ownership<REALobject> {
  static REALobject retain(REALobject object) { return lockWith(REALLockObject, object); }
  static void release(REALobject object) { REALUnlockObject(object); }
};

template <>
struct Ownership<REALstring> {
  static REALstring retain(REALstring string) { return lockWith(REALLockString, string); }
  static void release(REALstring string) { REALUnlockString(string); }
};

// A heap block from allocateZeroed
template <>
struct Ownership<char*> {
  static void release(char* block) { free(block); }
};

// Clang passes and returns an owner in a register, as it would what is owned; otherwise it goes through
// memory. An argument is then destroyed by the function that is called, not by the caller after it. So a
// function that takes an Owned by value gives it back or hands it over itself: the order of releases is the
// same with compilers that don't know the attribute.
#if __has_cpp_attribute(clang::trivial_abi)
#define RETURNED_IN_REGISTER [[clang::trivial_abi]]
#else
#define RETURNED_IN_REGISTER
#endif

template <typename Reference>
class RETURNED_IN_REGISTER Owned {
 public:
  Owned() = default;  // owns nothing
  Owned(Owned&& other) noexcept : reference_(other.leak()) {}
  Owned& operator=(Owned&&) = delete;
  // A host service may raise by throwing, also when something is given back to it. (If it throws while
  // another exception unwinds, the process ends, as C++ requires.)
  ~Owned() noexcept(false) {
    if (reference_) Ownership<Reference>::release(reference_);
  }

  Reference get() const { return reference_; }
  explicit operator bool() const { return reference_; }

  Reference leak() {
    const Reference reference = reference_;
    reference_ = nullptr;
    return reference;
  }

  // Gives the reference back now: where the order matters, and before a value is returned. If the host throws
  // while something is given back, a value that is still a local is released; clang 14 doesn't destroy a
  // returned value when the destructor of a local throws.
  void reset() { const Owned ended(leak()); }

 private:
  template <typename R>
  friend Owned<R> adopt(R reference);
  explicit Owned(Reference reference) : reference_(reference) {}

  Reference reference_ = nullptr;
};

template <typename Reference>
Owned<Reference> adopt(Reference reference) {
  return Owned<Reference>(reference);
}

// Empty for null, and on a host without the service that locks.
template <typename Reference>
Owned<Reference> retain(Reference reference) {
  return adopt(reference ? Ownership<Reference>::retain(reference) : nullptr);
}

// Gives back what a field of instance data owns. The field is cleared first: host code that runs meanwhile
// finds it empty.
template <typename Reference>
void releaseField(Reference& field) {
  auto owned = adopt(field);
  field = nullptr;
  owned.reset();
}

// A new block of `size` zero bytes. Empty when there is no memory, and for a size below 1 or from 2^31 on.
inline Owned<char*> allocateZeroed(int64_t size) {
  void* const block = size > 0 && size <= INT32_MAX ? calloc(1, static_cast<size_t>(size)) : nullptr;
  return adopt(static_cast<char*>(block));
}
