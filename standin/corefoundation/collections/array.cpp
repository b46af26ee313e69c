// Arrays. An immutable array is one block with its values behind it; a mutable one keeps them in a block of
// its own.
#include <CoreFoundation/CFArray.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "standin/corefoundation/collections/outside_call.h"
#include "standin/corefoundation/collections/value_rules.h"
#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/gate/memory.h"

struct __CFArray : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kArrayType;
  const cf::ValueRules* rules;
  const void** values;
  uint32_t length;
  uint32_t capacity;
  bool isMutable;
};

namespace cf {
namespace {

constexpr CFIndex kMaxValues = 0x0FFFFFFF;

void finalizeArray(CFTypeRef cf) {
  const __CFArray* const a = static_cast<const __CFArray*>(cf);
  for (uint32_t i = 0; i < a->length; ++i) giveUpValue(a->rules, a->values[i], "CFRelease");
  if (a->isMutable) std::free(a->values);
  if (a->rules) dropRules(a->rules);
}

Boolean equalArrays(CFTypeRef x, CFTypeRef y) {
  const __CFArray* const a = static_cast<const __CFArray*>(x);
  const __CFArray* const b = static_cast<const __CFArray*>(y);
  if (a->length != b->length || a->rules->equal != b->rules->equal) return false;
  for (uint32_t i = 0; i < a->length; ++i) {
    if (!equalValues(a->rules, a->values[i], b->values[i], "CFEqual")) return false;
  }
  return true;
}

CFHashCode hashArray(CFTypeRef cf) {
  return static_cast<const __CFArray*>(cf)->length;
}

bool reserve(__CFArray* a, size_t length) {
  if (length <= a->capacity) return true;
  if (length > static_cast<size_t>(kMaxValues)) return false;
  const size_t wanted = std::max<size_t>({length, a->capacity + a->capacity / 2, 8});
  void* const grown = standin::takeMemory([&] { return std::realloc(a->values, wanted * sizeof(void*)); });
  if (grown == nullptr) return false;
  a->values = static_cast<const void**>(grown);
  a->capacity = wanted;
  return true;
}

// Room for `length` values, none in it yet; null when there is no memory.
__CFArray* makeArray(size_t length, const ValueRules& rules, bool isMutable, const char* call) {
  __CFArray* const a = makeObject<__CFArray>(isMutable ? 0 : length * sizeof(void*));
  if (a == nullptr) return nullptr;
  a->isMutable = isMutable;
  a->rules = holdRules(rules);
  if (!isMutable) a->values = reinterpret_cast<const void**>(a + 1);
  if (a->rules == nullptr || (isMutable && !reserve(a, length))) {
    release(a, call);
    return nullptr;
  }
  return a;
}

__CFArray* makeFilled(const void* const* values, size_t length, const ValueRules& rules, bool isMutable,
                      const char* call) {
  __CFArray* const a = makeArray(length, rules, isMutable, call);
  if (a == nullptr) return nullptr;
  for (size_t i = 0; i < length; ++i) {
    a->values[i] = takeValue(a->rules, values[i], call);
    a->length = i + 1;
  }
  return a;
}

__CFArray* checkedMutable(CFMutableArrayRef a, const char* call) {
  checked(a, call);
  if (!a->isMutable) misuse(call, "the array is immutable");
  return a;
}

void checkIndex(const __CFArray* a, CFIndex index, size_t limit, const char* call) {
  if (index >= 0 && static_cast<size_t>(index) < limit) return;
  misuse(call, "index " + std::to_string(index) + " in an array of " + std::to_string(a->length));
}

void checkRange(const __CFArray* a, CFRange range, const char* call) {
  if (range.location >= 0 && range.length >= 0 &&
      static_cast<uint64_t>(range.location) + static_cast<uint64_t>(range.length) <= a->length) {
    return;
  }
  misuse(call, "range " + std::to_string(range.location) + "+" + std::to_string(range.length) +
                   " in an array of " + std::to_string(a->length));
}

CFIndex indexOf(const __CFArray* a, CFRange range, const void* value, const char* call) {
  if (value == nullptr && a->rules == &kObjectRules) misuse(call, "null is looked for among CFType values");
  for (CFIndex i = range.location; i < range.location + range.length; ++i) {
    if (equalValues(a->rules, a->values[i], value, call)) return i;
  }
  return kCFNotFound;
}

void insert(__CFArray* a, size_t index, const void* value, const char* call) {
  // Taken first: the value may be on its way out of this very array.
  const void* const taken = takeValue(a->rules, value, call);
  if (!reserve(a, a->length + 1)) {
    giveUpValue(a->rules, taken, call);
    return;
  }
  std::memmove(a->values + index + 1, a->values + index, (a->length - index) * sizeof(void*));
  a->values[index] = taken;
  ++a->length;
}

}  // namespace

const CFRuntimeClass kArrayClass = {
    .className = "CFArray", .finalize = finalizeArray, .equal = equalArrays, .hash = hashArray};

}  // namespace cf

using standin::Gate;

CFTypeID CFArrayGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kArrayType;
}

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                         const CFArrayCallBacks* callBacks) {
  const Gate gate(__func__);
  if (numValues < 0 || numValues > cf::kMaxValues) cf::misuse(__func__, "an impossible number of values");
  if (numValues > 0 && values == nullptr) cf::misuse(__func__, "null values with a number");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeFilled(values, static_cast<size_t>(numValues), cf::rulesOf(callBacks), false, __func__);
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef theArray) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeFilled(theArray->values, theArray->length, *theArray->rules, false, __func__);
}

// The capacity is a hint that nothing depends on.
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                       const CFArrayCallBacks* callBacks) {
  const Gate gate(__func__);
  if (capacity < 0) cf::misuse(__func__, "a capacity below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeArray(0, cf::rulesOf(callBacks), true, __func__);
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFArrayRef theArray) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  if (capacity < 0) cf::misuse(__func__, "a capacity below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeFilled(theArray->values, theArray->length, *theArray->rules, true, __func__);
}

CFIndex CFArrayGetCount(CFArrayRef theArray) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(theArray->length);
}

const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  cf::checkIndex(theArray, idx, theArray->length, __func__);
  return gate.fails() ? nullptr : theArray->values[idx];
}

Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void* value) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  cf::checkRange(theArray, range, __func__);
  return !gate.fails() && cf::indexOf(theArray, range, value, __func__) != kCFNotFound;
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void* value) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  cf::checkRange(theArray, range, __func__);
  if (gate.fails()) return kCFNotFound;
  return cf::indexOf(theArray, range, value, __func__);
}

void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void* context) {
  const Gate gate(__func__);
  cf::checked(theArray, __func__);
  cf::checkRange(theArray, range, __func__);
  if (applier == nullptr) cf::misuse(__func__, "null function");
  if (gate.fails()) return;
  for (CFIndex i = range.location; i < range.location + range.length; ++i) {
    {
      const cf::OutsideCall outside;
      applier(theArray->values[i], context);
    }
    cf::checked(theArray, __func__);
    cf::checkRange(theArray, range, __func__);
  }
}

void CFArrayAppendValue(CFMutableArrayRef theArray, const void* value) {
  const Gate gate(__func__);
  cf::checkedMutable(theArray, __func__);
  if (!gate.fails()) cf::insert(theArray, theArray->length, value, __func__);
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value) {
  const Gate gate(__func__);
  cf::checkedMutable(theArray, __func__);
  cf::checkIndex(theArray, idx, theArray->length + 1, __func__);
  if (!gate.fails()) cf::insert(theArray, static_cast<size_t>(idx), value, __func__);
}

// The index behind the last value appends.
void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void* value) {
  const Gate gate(__func__);
  cf::checkedMutable(theArray, __func__);
  cf::checkIndex(theArray, idx, theArray->length + 1, __func__);
  if (gate.fails()) return;
  if (static_cast<uint32_t>(idx) == theArray->length) {
    cf::insert(theArray, theArray->length, value, __func__);
    return;
  }
  const void* const old = theArray->values[idx];
  theArray->values[idx] = cf::takeValue(theArray->rules, value, __func__);
  cf::giveUpValue(theArray->rules, old, __func__);
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx) {
  const Gate gate(__func__);
  cf::checkedMutable(theArray, __func__);
  cf::checkIndex(theArray, idx, theArray->length, __func__);
  if (gate.fails()) return;
  const size_t index = static_cast<size_t>(idx);
  const void* const old = theArray->values[index];
  --theArray->length;
  std::memmove(theArray->values + index, theArray->values + index + 1,
               (theArray->length - index) * sizeof(void*));
  cf::giveUpValue(theArray->rules, old, __func__);
}

void CFArrayRemoveAllValues(CFMutableArrayRef theArray) {
  const Gate gate(__func__);
  cf::checkedMutable(theArray, __func__);
  if (gate.fails()) return;
  while (theArray->length > 0) {
    --theArray->length;
    cf::giveUpValue(theArray->rules, theArray->values[theArray->length], __func__);
  }
}
