// What a Core Foundation may make once and keep for ever is made before anything counts.
#include <CoreFoundation/CoreFoundation.h>

#include "tests/foreign/objects.h"

namespace foreign {
namespace {

void makeAndRelease(CFTypeRef object) {
  if (object) CFRelease(object);
}

// After the library behind was initialised, and before whatever uses this one is.
__attribute__((constructor)) void fillCaches() {
  // Little-endian: the low bytes of a number are the number in a smaller type.
  for (int64_t number = -16; number <= 256; ++number)
    for (const CFNumberType type :
         {kCFNumberSInt8Type, kCFNumberSInt16Type, kCFNumberSInt32Type, kCFNumberSInt64Type})
      makeAndRelease(CFNumberCreate(kCFAllocatorDefault, type, &number));
  makeAndRelease(CFStringCreateWithCString(kCFAllocatorDefault, "", kCFStringEncodingUTF8));
  // Their converters, with what isn't ASCII.
  for (const CFStringEncoding encoding : {kCFStringEncodingMacRoman, kCFStringEncodingISOLatin1,
                                          kCFStringEncodingWindowsLatin1, kCFStringEncodingNextStepLatin}) {
    constexpr UInt8 kLetter = 0xE9;
    makeAndRelease(CFStringCreateWithBytes(kCFAllocatorDefault, &kLetter, 1, encoding, false));
  }
  makeAndRelease(CFUUIDCreate(kCFAllocatorDefault));  // and the set of all, where there is one
  makeAndRelease(CFDataCreate(kCFAllocatorDefault, nullptr, 0));
  makeAndRelease(CFArrayCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeArrayCallBacks));
  makeAndRelease(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                    &kCFTypeDictionaryValueCallBacks));
  depthBehind = kNoCall;  // what is made from now on counts
}

}  // namespace
}  // namespace foreign
