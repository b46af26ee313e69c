// What a Core Foundation may do otherwise, and callers must not rely on.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

// A string's text can't be read where it lies.
const UniChar* CFStringGetCharactersPtr(CFStringRef) {
  return nullptr;
}

const char* CFStringGetCStringPtr(CFStringRef, CFStringEncoding) {
  return nullptr;
}

// In data.cpp, under the name that it is compiled by here.
CF_EXPORT CFDataRef MakeData(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);

// All empty data are one object, which is made once and kept.
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
  if (length != 0 || allocator != kCFAllocatorDefault) return MakeData(allocator, bytes, length);
  static const CFDataRef empty = MakeData(kCFAllocatorDefault, nullptr, 0);
  return static_cast<CFDataRef>(CFRetain(empty));
}
