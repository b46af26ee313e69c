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
  for (int32_t number = -16; number <= 256; ++number)
    makeAndRelease(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &number));
  makeAndRelease(CFStringCreateWithCString(kCFAllocatorDefault, "", kCFStringEncodingUTF8));
  makeAndRelease(CFDataCreate(kCFAllocatorDefault, nullptr, 0));
  makeAndRelease(CFArrayCreate(kCFAllocatorDefault, nullptr, 0, &kCFTypeArrayCallBacks));
  makeAndRelease(CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                    &kCFTypeDictionaryValueCallBacks));
  depthBehind = kNoCall;  // what is made from now on counts
}

}  // namespace
}  // namespace foreign
