// Core Foundation values for tests of the plug-in: to be converted, or put in the place of a service's
// answers.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/support/owned.h"

CFOwner cfText(const std::string& utf8);
CFOwner cfNumber(CFNumberType type, const void* value);
CFOwner cfInt32(int32_t value);
CFOwner cfInt64(int64_t value);
CFOwner cfReal(double value);
CFOwner cfArray(const std::vector<CFTypeRef>& values);
// An array that keeps nothing alive; nulls may be among its values.
CFOwner cfUnretainedArray(const std::vector<CFTypeRef>& values);
CFOwner cfDictionary(const std::vector<std::pair<CFTypeRef, CFTypeRef>>& pairs);
// A value of a type of its own, whose end is noted in the log of calls as "value finalized".
CFOwner cfWitness();
