// Attributed strings. Nothing here reads one, only its type is looked at: it keeps neither text nor
// attributes.
#include <CoreFoundation/CoreFoundation.h>

#include "standin/gate/gate.h"
#include "standin/system/objects.h"

using standin::Gate;

namespace {

const CFRuntimeClass kStringClass = {.className = "CFAttributedString"};

CFTypeID stringType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kStringClass);
  return type;
}

}  // namespace

CFTypeID CFAttributedStringGetTypeID(void) {
  const Gate gate(__func__);
  return gate.fails() ? 0 : stringType();
}

CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef alloc, CFStringRef str, CFDictionaryRef) {
  const Gate gate(__func__);
  standin::checkObject(__func__, str, CFStringGetTypeID(), "string");
  if (gate.fails()) return nullptr;
  return static_cast<CFAttributedStringRef>(_CFRuntimeCreateInstance(alloc, stringType(), 0, nullptr));
}
