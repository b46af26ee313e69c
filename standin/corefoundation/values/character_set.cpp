// Character sets. Nothing here asks one for its characters, only its type is looked at: they hold none.
#include <CoreFoundation/CFCharacterSet.h>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFCharacterSet : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kCharacterSetType;
};

namespace cf {

const CFRuntimeClass kCharacterSetClass = {.className = "CFCharacterSet"};

}  // namespace cf

using standin::Gate;

CFTypeID CFCharacterSetGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kCharacterSetType;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::makeObject<__CFCharacterSet>();
}
