// Where the documentation of the metadata services says nothing of what a call answers.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "standin/coreservices/metadata/control.h"

namespace standin::metadata {

// Each ends the process in the name of `call` if that was asked for; `what` says what is undefined. Else it
// answers null or 0, or what was asked for instead.
CFTypeRef undefinedItem(const char* call, const std::string& what);   // Get rule
CFTypeRef undefinedValue(const char* call, const std::string& what);  // Get rule
CFArrayRef copyUndefinedValues(const char* call, const std::string& what);
CFIndex undefinedCount(const char* call, const std::string& what);
// Whether a change takes effect.
bool undefinedEffect(const char* call, const std::string& what);

}  // namespace standin::metadata
