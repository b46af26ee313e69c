// What a Core Foundation may make once and keep for ever is made before anything counts.
#include <CoreFoundation/CoreFoundation.h>

#include "tests/foreign/passage.h"

namespace foreign {
namespace {

template <class Function>
Function* behind(Function&, const char* name) {
  return reinterpret_cast<Function*>(findOriginal(name));
}
#define BEHIND(function) behind(function, #function)

void makeAndRelease(CFTypeRef object) {
  static const auto release = BEHIND(CFRelease);
  if (object) release(object);
}

__attribute__((constructor)) void fillCaches() {
  const auto makeNumber = BEHIND(CFNumberCreate);
  for (int32_t number = -16; number <= 256; ++number)
    makeAndRelease(makeNumber(kCFAllocatorDefault, kCFNumberSInt32Type, &number));
  makeAndRelease(BEHIND(CFStringCreateWithCString)(kCFAllocatorDefault, "", kCFStringEncodingUTF8));
  makeAndRelease(BEHIND(CFDataCreate)(kCFAllocatorDefault, nullptr, 0));
  makeAndRelease(BEHIND(CFArrayCreate)(kCFAllocatorDefault, nullptr, 0, &kCFTypeArrayCallBacks));
  makeAndRelease(BEHIND(CFDictionaryCreate)(kCFAllocatorDefault, nullptr, nullptr, 0,
                                            &kCFTypeDictionaryKeyCallBacks,
                                            &kCFTypeDictionaryValueCallBacks));
}

}  // namespace
}  // namespace foreign
