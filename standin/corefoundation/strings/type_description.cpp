// The name of a type. It stands here because the runtime, below, knows no strings.
#include <CoreFoundation/CFBase.h>

#include "standin/corefoundation/runtime/object.h"
#include "standin/corefoundation/strings/string.h"

using standin::Gate;

CFStringRef CFCopyTypeIDDescription(CFTypeID type_id) {
  const Gate gate(__func__);
  if (gate.fails() || type_id >= cf::kTypeLimit) return nullptr;
  const CFRuntimeClass* const cls = cf::classTable[type_id].cls;
  return cls ? cf::makeNarrowString(cls->className) : nullptr;
}
