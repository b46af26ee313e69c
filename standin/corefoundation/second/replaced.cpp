// What a Core Foundation may do otherwise, and callers must not rely on.
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

// A string's text can't be read where it lies.
const UniChar* CFStringGetCharactersPtr(CFStringRef) {
  return nullptr;
}

const char* CFStringGetCStringPtr(CFStringRef, CFStringEncoding) {
  return nullptr;
}

// Under the names that they have here (renamed.cpp).
CF_EXPORT CFDataRef MakeData(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
CF_EXPORT CFIndex LengthOfData(CFDataRef data);
CF_EXPORT CFDictionaryRef MakeDictionary(CFAllocatorRef allocator, const void** keys, const void** values,
                                         CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
                                         const CFDictionaryValueCallBacks* valueCallBacks);
CF_EXPORT CFStringRef ConstantString(const char* cStr);

// All empty data are one object, which is made once and kept.
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
  if (length != 0 || allocator != kCFAllocatorDefault) return MakeData(allocator, bytes, length);
  static const CFDataRef empty = MakeData(kCFAllocatorDefault, nullptr, 0);
  return static_cast<CFDataRef>(CFRetain(empty));
}

// So is the dictionary without entries. (The small numbers are constants in either library.)
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  if (numValues != 0 || allocator != kCFAllocatorDefault || keyCallBacks != &kCFTypeDictionaryKeyCallBacks ||
      valueCallBacks != &kCFTypeDictionaryValueCallBacks)
    return MakeDictionary(allocator, keys, values, numValues, keyCallBacks, valueCallBacks);
  static const CFDictionaryRef empty =
      MakeDictionary(kCFAllocatorDefault, nullptr, nullptr, 0, keyCallBacks, valueCallBacks);
  return static_cast<CFDictionaryRef>(CFRetain(empty));
}

// The library makes things of its own by its public functions, when it is loaded and when they are first
// needed, and keeps them. It calls these functions as anybody does, through whatever stands before it.
[[maybe_unused]] static const CFDateRef madeAtOnce = CFDateCreate(kCFAllocatorDefault, 0);

CFIndex CFDataGetLength(CFDataRef data) {
  [[maybe_unused]] static const CFDateRef madeWhenNeeded = CFDateCreate(kCFAllocatorDefault, 1);
  return LengthOfData(data);
}

CFStringRef __CFStringMakeConstantString(const char* cStr) {
  const CFStringRef string = ConstantString(cStr);
  CFHash(string);  // as a table of constants would ask
  return string;
}
