#include "standin/corefoundation/collections/value_rules.h"

#include <CoreFoundation/CFBag.h>
#include <CoreFoundation/CFSet.h>

#include <new>

#include "standin/corefoundation/collections/outside_call.h"

namespace cf {
namespace {

// The members of the constant callback sets. They are compared by address: a collection that has them works
// on its values without leaving the library.
const void* retainObject(CFAllocatorRef, const void* value) {
  return retain(value, "CFRetain");
}
void releaseObject(CFAllocatorRef, const void* value) {
  release(value, "CFRelease");
}
Boolean equalObjects(const void* a, const void* b) {
  return equal(a, b, "CFEqual");
}
CFHashCode hashObject(const void* value) {
  return hash(value, "CFHash");
}
CFStringRef describeObject(const void* value) {
  return CFCopyTypeIDDescription(classOf(value, "CFCopyTypeIDDescription")->id);
}

}  // namespace

const ValueRules kObjectRules = {retainObject, releaseObject, equalObjects, hashObject};
const ValueRules kPointerRules = {nullptr, nullptr, nullptr, nullptr};

const ValueRules* holdRules(const ValueRules& rules) {
  if (rules == kPointerRules) return &kPointerRules;
  if (rules.retain == retainObject && rules.release == releaseObject && rules.equal == equalObjects) {
    return &kObjectRules;
  }
  return new (std::nothrow) ValueRules(rules);
}

void dropRules(const ValueRules* rules) {
  if (rules != &kObjectRules && rules != &kPointerRules) delete rules;
}

ValueRules rulesOf(const CFArrayCallBacks* callBacks) {
  if (callBacks == nullptr) return kPointerRules;
  return {callBacks->retain, callBacks->release, callBacks->equal, nullptr};
}

ValueRules rulesOf(const CFDictionaryKeyCallBacks* callBacks) {
  if (callBacks == nullptr) return kPointerRules;
  return {callBacks->retain, callBacks->release, callBacks->equal, callBacks->hash};
}

ValueRules rulesOf(const CFDictionaryValueCallBacks* callBacks) {
  if (callBacks == nullptr) return kPointerRules;
  return {callBacks->retain, callBacks->release, callBacks->equal, nullptr};
}

const void* takeValue(const ValueRules* rules, const void* value, const char* call) {
  if (rules == &kObjectRules) {
    if (value == nullptr) misuse(call, "a null value in a collection of CFType values");
    return retain(value, call);
  }
  if (rules->retain == nullptr) return value;
  const OutsideCall outside;
  return rules->retain(nullptr, value);
}

void giveUpValue(const ValueRules* rules, const void* value, const char* call) {
  if (rules == &kObjectRules) {
    release(value, call);
  } else if (rules->release) {
    const OutsideCall outside;
    rules->release(nullptr, value);
  }
}

bool equalValues(const ValueRules* rules, const void* a, const void* b, const char* call) {
  if (a == b) return true;
  if (rules == &kObjectRules) return equal(a, b, call);
  if (rules->equal == nullptr) return false;
  const OutsideCall outside;
  return rules->equal(a, b);
}

CFHashCode hashValue(const ValueRules* rules, const void* value, const char* call) {
  if (rules == &kObjectRules) return hash(value, call);
  if (rules->hash == nullptr) return reinterpret_cast<CFHashCode>(value) * 2654435761U;
  const OutsideCall outside;
  return rules->hash(value);
}

}  // namespace cf

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, cf::retainObject, cf::releaseObject, cf::describeObject,
                                                cf::equalObjects};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {
    0, cf::retainObject, cf::releaseObject, cf::describeObject, cf::equalObjects, cf::hashObject};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, cf::retainObject, cf::releaseObject,
                                                                    cf::describeObject, cf::equalObjects};
const CFSetCallBacks kCFTypeSetCallBacks = {
    0, cf::retainObject, cf::releaseObject, cf::describeObject, cf::equalObjects, cf::hashObject};
const CFBagCallBacks kCFTypeBagCallBacks = {
    0, cf::retainObject, cf::releaseObject, cf::describeObject, cf::equalObjects, cf::hashObject};
