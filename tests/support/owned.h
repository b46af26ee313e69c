// Holders of Core Foundation objects for tests, and short ways to make strings and arrays.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ledger.h"

template <typename Ref>
class Owned {
 public:
  Owned() = default;
  explicit Owned(Ref ref) : ref_(ref) {}  // takes over the caller's reference
  Owned(Owned&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(ref_, other.ref_);
    return *this;
  }
  ~Owned() {
    if (ref_) CFRelease(ref_);
  }
  Ref get() const { return ref_; }
  Ref leak() { return std::exchange(ref_, nullptr); }
  explicit operator bool() const { return ref_ != nullptr; }
  friend bool operator==(const Owned& owned, std::nullptr_t) { return !owned; }

 private:
  Ref ref_ = nullptr;
};

typedef Owned<CFTypeRef> CFOwner;  // of a reference to an object of any type

inline CFOwner own(CFTypeRef object) {
  return CFOwner(object);
}

inline Owned<CFStringRef> makeString(const std::string& text) {
  return Owned(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8));
}

inline Owned<CFURLRef> makeURL(const std::string& path) {
  return Owned(CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
                                                       reinterpret_cast<const UInt8*>(path.data()),
                                                       static_cast<CFIndex>(path.size()), false));
}

inline Owned<CFArrayRef> makeStrings(std::initializer_list<const char*> texts) {
  const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  for (const char* text : texts) CFArrayAppendValue(array, makeString(text).get());
  return Owned<CFArrayRef>(array);
}

inline std::string textOf(CFTypeRef string) {
  if (!string || CFGetTypeID(string) != CFStringGetTypeID()) return "(no string)";
  std::vector<char> text(4096);
  const auto size = static_cast<CFIndex>(text.size());
  const bool fits =
      CFStringGetCString(static_cast<CFStringRef>(string), text.data(), size, kCFStringEncodingUTF8);
  return fits ? text.data() : "(too long)";
}
