// Core Foundation's objects for plain values. They are the caller's; null when there is no memory.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string_view>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

CFStringRef createString(std::string_view bytes);
CFTypeRef createObject(const Value& value);

// The values of one attribute: an array for one that can have several, whether or not it has, and the first
// value for others. Null when there are none.
CFTypeRef createObject(FileAttribute attribute, const std::vector<Value>& values);

// They take over the caller's reference to the value; where it is null, nothing changes.
void appendAndRelease(CFMutableArrayRef array, CFTypeRef value);
void setAndRelease(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value);

// Null for null.
CFArrayRef copyOf(CFArrayRef array);

// The attribute that a string names; None for one that is no key of the schema.
FileAttribute attributeNamed(CFStringRef key);

}  // namespace standin::metadata
