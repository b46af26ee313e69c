// Sets and bags are always empty here: only their types matter.
#include <CoreFoundation/CFBag.h>
#include <CoreFoundation/CFSet.h>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFSet : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kSetType;
};

struct __CFBag : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kBagType;
};

namespace cf {

const CFRuntimeClass kSetClass = {.className = "CFSet"};
const CFRuntimeClass kBagClass = {.className = "CFBag"};

}  // namespace cf

using standin::Gate;

CFTypeID CFSetGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kSetType;
}

CFSetRef CFSetCreate(CFAllocatorRef allocator, const void**, CFIndex numValues, const CFSetCallBacks*) {
  const Gate gate(__func__);
  if (numValues != 0) cf::misuse(__func__, "sets hold no values here");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeObject<__CFSet>();
}

CFTypeID CFBagGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kBagType;
}

CFBagRef CFBagCreate(CFAllocatorRef allocator, const void**, CFIndex numValues, const CFBagCallBacks*) {
  const Gate gate(__func__);
  if (numValues != 0) cf::misuse(__func__, "bags hold no values here");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeObject<__CFBag>();
}
