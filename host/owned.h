// Owners. A reference that the plug-in must give back lives in an Owned, which gives it back at the end of
// its scope, on every way out. The verb tells where the reference comes from: `adopt` takes one that came
// with ownership (Create, Copy, a handle returned by the host), `retain` makes one of its own, and `leak`
// hands it over to whoever asked for it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stdlib.h>

#include "services.h"

// Core Foundation references
template <typename Reference>
struct Ownership {
  static bool take(Reference reference) { return CFRetain(reference); }
  static void giveBack(Reference reference) { CFRelease(reference); }
};

// A host that offers no lock gives no reference, and nothing may be given back to it then.
template <typename Handle>
bool takeWith(Entry<void(Handle)>& service, Handle handle) {
  const auto lock = service.function();
  if (lock) lock(handle);
  return lock;
}

template <>
struct Ownership<REALobject> {
  static bool take(REALobject object) { return takeWith(REALLockObject, object); }
  static void giveBack(REALobject object) { REALUnlockObject(object); }
};

template <>
struct Ownership<REALstring> {
  static bool take(REALstring string) { return takeWith(REALLockString, string); }
  static void giveBack(REALstring string) { REALUnlockString(string); }
};

// A heap block from allocateZeroed
template <>
struct Ownership<char*> {
  static void giveBack(char* block) { free(block); }
};

template <typename Reference>
class Owned {
 public:
  Owned() = default;  // owns nothing
  Owned(Owned&& other) noexcept : reference_(other.leak()) {}
  Owned& operator=(Owned&&) = delete;
  // A host service may raise by throwing, also when something is given back to it. (If it does so while
  // another exception is passing, the process ends, as C++ has it.)
  ~Owned() noexcept(false) {
    if (reference_) Ownership<Reference>::giveBack(reference_);
  }

  Reference get() const { return reference_; }
  explicit operator bool() const { return reference_; }

  Reference leak() {
    const Reference reference = reference_;
    reference_ = nullptr;
    return reference;
  }

  // Gives it back now, where the order of giving back matters.
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

// Owns nothing for null, and where no reference can be taken.
template <typename Reference>
Owned<Reference> retain(Reference reference) {
  if (!reference || !Ownership<Reference>::take(reference)) return {};
  return adopt(reference);
}

// Gives back what a field of instance data owns. The field is cleared first, so that re-entry finds nothing
// in it.
template <typename Reference>
void releaseField(Reference& field) {
  auto owned = adopt(field);
  field = nullptr;
  owned.reset();
}

// Null when there is no memory, and for a size of 0 or of 2^31 bytes or more.
inline Owned<char*> allocateZeroed(int64_t size) {
  void* const block = size > 0 && size <= INT32_MAX ? calloc(1, static_cast<size_t>(size)) : nullptr;
  return adopt(static_cast<char*>(block));
}
