// Attributed strings. Nothing here reads one, only its type is looked at: it keeps neither text nor attributes.
#include <CoreFoundation/CoreFoundation.h>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

using standin::Gate;

namespace {

const CFRuntimeClass kStringClass = {0,       "CFAttributedString", nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr,              nullptr, nullptr, nullptr};

CFTypeID stringType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kStringClass);
  return type;
}

}  // namespace

CFTypeID CFAttributedStringGetTypeID(void) {
  const Gate gate{__func__};
  return gate.fails() ? 0 : stringType();
}

CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef alloc, CFStringRef str, CFDictionaryRef) {
  const Gate gate{__func__};
  if (!str) standin::die(__func__, "the string is null");
  if (gate.fails()) return nullptr;
  return static_cast<CFAttributedStringRef>(_CFRuntimeCreateInstance(alloc, stringType(), 0, nullptr));
}
