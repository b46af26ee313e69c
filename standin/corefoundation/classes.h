// The records of the library's own classes, each defined beside its functions.
#pragma once

#include "standin/corefoundation/CFRuntime.h"

namespace cf {

extern const CFRuntimeClass allocatorClass;
extern const CFRuntimeClass stringClass;
extern const CFRuntimeClass nullClass;
extern const CFRuntimeClass dictionaryClass;
extern const CFRuntimeClass arrayClass;
extern const CFRuntimeClass dataClass;
extern const CFRuntimeClass booleanClass;
extern const CFRuntimeClass numberClass;
extern const CFRuntimeClass urlClass;
extern const CFRuntimeClass dateClass;
extern const CFRuntimeClass setClass;
extern const CFRuntimeClass bagClass;
extern const CFRuntimeClass uuidClass;
extern const CFRuntimeClass timeZoneClass;
extern const CFRuntimeClass characterSetClass;
extern const CFRuntimeClass errorClass;

// A record as the library's own classes need it.
constexpr CFRuntimeClass classRecord(const char* name, void (*finalize)(CFTypeRef),
                                     Boolean (*equal)(CFTypeRef, CFTypeRef), CFHashCode (*hash)(CFTypeRef)) {
  return {0, name, nullptr, nullptr, finalize, equal, hash, nullptr, nullptr, nullptr, nullptr};
}

}  // namespace cf
