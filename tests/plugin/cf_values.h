// Core Foundation values that tests put in the place of a service's answers.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

struct CFReleaser {
  void operator()(CFTypeRef value) const { CFRelease(value); }
};
typedef std::unique_ptr<const void, CFReleaser> CFOwner;  // of one reference

inline CFOwner own(CFTypeRef value) {
  return CFOwner(value);
}
CFOwner cfText(const std::string& utf8);
CFOwner cfNumber(CFNumberType type, const void* value);
CFOwner cfInteger(int64_t value);
CFOwner cfReal(double value);
// Nulls may be among the values: the array keeps nothing.
CFOwner cfArray(const std::vector<CFTypeRef>& values);
CFOwner cfDictionary(const std::vector<std::pair<CFTypeRef, CFTypeRef>>& pairs);
// A value of a type of its own, whose end is noted in the log of calls as "value finalized".
CFOwner cfWitness();
