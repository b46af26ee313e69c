// What arrays and dictionaries share: holding callbacks and running them.
//
// This room has arrays and dictionaries, and the types of sets and bags. It includes the runtime and the
// gate.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>

#include "standin/corefoundation/runtime/object.h"

namespace cf {

// The callbacks on one kind of value. Most collections use the constant sets of this library; a foreign set
// is copied, and the copy belongs to the collection.
struct ValueRules {
  CFArrayRetainCallBack retain;
  CFArrayReleaseCallBack release;
  CFArrayEqualCallBack equal;
  CFDictionaryHashCallBack hash;

  bool operator==(const ValueRules&) const = default;
};

// The rules of CFType values, and of values that are only pointers.
extern const ValueRules kObjectRules;
extern const ValueRules kPointerRules;

// Null when there is no memory for a copy.
const ValueRules* holdRules(const ValueRules& rules);
void dropRules(const ValueRules* rules);

// Null callbacks mean plain pointers.
ValueRules rulesOf(const CFArrayCallBacks* callBacks);
ValueRules rulesOf(const CFDictionaryKeyCallBacks* callBacks);
ValueRules rulesOf(const CFDictionaryValueCallBacks* callBacks);

// What the callbacks do to one value; a null value in a collection of CFType values ends the process.
const void* takeValue(const ValueRules* rules, const void* value, const char* call);
void giveUpValue(const ValueRules* rules, const void* value, const char* call);
bool equalValues(const ValueRules* rules, const void* a, const void* b, const char* call);
CFHashCode hashValue(const ValueRules* rules, const void* value, const char* call);

}  // namespace cf
