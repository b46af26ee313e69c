// Sets and bags. Nothing here reads one, only its type is looked at: they are always empty.
#include <CoreFoundation/CFBag.h>
#include <CoreFoundation/CFSet.h>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"

struct __CFSet : cf::Header {
  static constexpr CFTypeID typeId = cf::kSetType;
};

struct __CFBag : cf::Header {
  static constexpr CFTypeID typeId = cf::kBagType;
};

namespace cf {

const CFRuntimeClass setClass = classRecord("CFSet", nullptr, nullptr, nullptr);
const CFRuntimeClass bagClass = classRecord("CFBag", nullptr, nullptr, nullptr);

}  // namespace cf

CFTypeID CFSetGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kSetType;
}

CFSetRef CFSetCreate(CFAllocatorRef allocator, const void**, CFIndex numValues, const CFSetCallBacks*) {
  const standin::Gate gate{__func__};
  if (numValues != 0) cf::misuse(__func__, "sets hold no values here");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeObject<__CFSet>();
}

CFTypeID CFBagGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kBagType;
}

CFBagRef CFBagCreate(CFAllocatorRef allocator, const void**, CFIndex numValues, const CFBagCallBacks*) {
  const standin::Gate gate{__func__};
  if (numValues != 0) cf::misuse(__func__, "bags hold no values here");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeObject<__CFBag>();
}
