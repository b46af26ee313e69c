// Character sets. Nothing here asks one for its characters, only its type is looked at: they hold none.
#include <CoreFoundation/CFCharacterSet.h>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"

struct __CFCharacterSet : cf::Header {
  static constexpr CFTypeID typeId = cf::kCharacterSetType;
};

namespace cf {

const CFRuntimeClass characterSetClass = classRecord("CFCharacterSet", nullptr, nullptr, nullptr);

}  // namespace cf

CFTypeID CFCharacterSetGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kCharacterSetType;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange) {
  const standin::Gate gate{__func__};
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::makeObject<__CFCharacterSet>();
}
