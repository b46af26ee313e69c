// The records of the library's own classes. Each is defined in its own room, beside its functions: the table
// must have them all before any code has run.
#pragma once

#include "standin/corefoundation/CFRuntime.h"

namespace cf {

extern const CFRuntimeClass kAllocatorClass;
extern const CFRuntimeClass kStringClass;
extern const CFRuntimeClass kNullClass;
extern const CFRuntimeClass kDictionaryClass;
extern const CFRuntimeClass kArrayClass;
extern const CFRuntimeClass kDataClass;
extern const CFRuntimeClass kBooleanClass;
extern const CFRuntimeClass kNumberClass;
extern const CFRuntimeClass kURLClass;
extern const CFRuntimeClass kDateClass;
extern const CFRuntimeClass kSetClass;
extern const CFRuntimeClass kBagClass;
extern const CFRuntimeClass kUUIDClass;
extern const CFRuntimeClass kTimeZoneClass;
extern const CFRuntimeClass kCharacterSetClass;
extern const CFRuntimeClass kErrorClass;

}  // namespace cf
