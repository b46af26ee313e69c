// Sets of values that differ from each other.
#include <CoreFoundation/CFSet.h>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/members.h"

struct __CFSet : cf::Members {
  static constexpr CFTypeID typeId = cf::kSetType;
};

namespace cf {
namespace {

// Whether a value was given more than once makes no difference.
__CFSet* makeSet(const void* const* values, CFIndex count, const ValueRules& rules, const char* call) {
  __CFSet* const set = makeObject<__CFSet>();
  if (set == nullptr) return nullptr;
  if (!fill(*set, values, count, rules, call)) {
    release(set, call);
    return nullptr;
  }
  for (uint32_t i = 0; i < set->places; ++i) {
    if (set->table[i].times > 1) set->table[i].times = 1;
  }
  return set;
}

}  // namespace

const CFRuntimeClass setClass = classRecord("CFSet", finalizeMembers, equalMembers, hashMembers);

}  // namespace cf

CFTypeID CFSetGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kSetType;
}

CFSetRef CFSetCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                     const CFSetCallBacks* callBacks) {
  const standin::Gate gate{__func__};
  cf::checkValues(values, numValues, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeSet(values, numValues, cf::rulesOf(callBacks), __func__);
}

CFIndex CFSetGetCount(CFSetRef theSet) {
  const standin::Gate gate{__func__};
  cf::checked(theSet, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(theSet->distinct);
}

Boolean CFSetContainsValue(CFSetRef theSet, const void* value) {
  const standin::Gate gate{__func__};
  cf::checked(theSet, __func__);
  return !gate.fails() && cf::timesOf(*theSet, value, __func__) != 0;
}

void CFSetGetValues(CFSetRef theSet, const void** values) {
  const standin::Gate gate{__func__};
  cf::checked(theSet, __func__);
  if (values == nullptr) cf::misuse(__func__, "null place for the values");
  if (gate.fails()) return;
  for (uint32_t i = 0; i < theSet->places; ++i) {
    if (theSet->table[i].times != 0) *values++ = theSet->table[i].value;
  }
}
