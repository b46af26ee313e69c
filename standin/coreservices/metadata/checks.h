// Tests of arguments that every public function makes: a wrong one ends the process in the name of the call.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "standin/gate/gate.h"

namespace standin::metadata {

inline void checkType(const char* call, CFTypeRef cf, CFTypeID type, const char* what) {
  if (!cf) die(call, std::string("the ") + what + " is null");
  if (CFGetTypeID(cf) != type) die(call, std::string("this is no ") + what);
}

inline void checkString(const char* call, CFTypeRef cf) {
  checkType(call, cf, CFStringGetTypeID(), "string");
}

// Null is an array of no strings.
inline void checkStrings(const char* call, CFArrayRef array) {
  if (!array) return;
  checkType(call, array, CFArrayGetTypeID(), "array");
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) checkString(call, CFArrayGetValueAtIndex(array, i));
}

}  // namespace standin::metadata
