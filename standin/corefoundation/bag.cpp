// Bags: values, each any number of times.
#include <CoreFoundation/CFBag.h>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/members.h"

struct __CFBag : cf::Members {
  static constexpr CFTypeID typeId = cf::kBagType;
};

namespace cf {

const CFRuntimeClass bagClass = classRecord("CFBag", finalizeMembers, equalMembers, hashMembers);

}  // namespace cf

CFTypeID CFBagGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kBagType;
}

CFBagRef CFBagCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                     const CFBagCallBacks* callBacks) {
  const standin::Gate gate{__func__};
  cf::checkValues(values, numValues, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  __CFBag* const bag = cf::makeObject<__CFBag>();
  if (bag == nullptr) return nullptr;
  if (!cf::fill(*bag, values, numValues, cf::rulesOf(callBacks), __func__)) {
    cf::release(bag, __func__);
    return nullptr;
  }
  return bag;
}

CFIndex CFBagGetCount(CFBagRef theBag) {
  const standin::Gate gate{__func__};
  cf::checked(theBag, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(theBag->total);
}

CFIndex CFBagGetCountOfValue(CFBagRef theBag, const void* value) {
  const standin::Gate gate{__func__};
  cf::checked(theBag, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(cf::timesOf(*theBag, value, __func__));
}

Boolean CFBagContainsValue(CFBagRef theBag, const void* value) {
  const standin::Gate gate{__func__};
  cf::checked(theBag, __func__);
  return !gate.fails() && cf::timesOf(*theBag, value, __func__) != 0;
}
