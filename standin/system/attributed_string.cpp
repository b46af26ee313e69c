// Attributed strings: a text and one set of attributes, which all of the text has.
#include <CoreFoundation/CoreFoundation.h>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

struct __CFAttributedString {
  CFRuntimeBase base;
  CFStringRef text;
  CFDictionaryRef attributes;
};

namespace {

using standin::Gate;

CFAttributedStringRef stringOf(CFTypeRef cf) {
  return static_cast<CFAttributedStringRef>(cf);
}

void finalizeString(CFTypeRef cf) {
  if (stringOf(cf)->text) CFRelease(stringOf(cf)->text);
  if (stringOf(cf)->attributes) CFRelease(stringOf(cf)->attributes);
}

Boolean equalStrings(CFTypeRef a, CFTypeRef b) {
  return CFEqual(stringOf(a)->text, stringOf(b)->text) &&
         CFEqual(stringOf(a)->attributes, stringOf(b)->attributes);
}

CFHashCode hashString(CFTypeRef cf) {
  return CFHash(stringOf(cf)->text);
}

const CFRuntimeClass kStringClass = {0,
                                     "CFAttributedString",
                                     nullptr,
                                     nullptr,
                                     finalizeString,
                                     equalStrings,
                                     hashString,
                                     nullptr,
                                     nullptr,
                                     nullptr,
                                     nullptr};

CFTypeID stringType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kStringClass);
  return type;
}

void check(const char* call, CFTypeRef cf, CFTypeID type, const char* what) {
  if (!cf) standin::die(call, std::string("the ") + what + " is null");
  if (CFGetTypeID(cf) != type) standin::die(call, std::string("this is no ") + what);
}

CFDictionaryRef copyAttributes(CFDictionaryRef attributes) {
  if (attributes) return CFDictionaryCreateCopy(kCFAllocatorDefault, attributes);
  return CFDictionaryCreate(kCFAllocatorDefault, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                            &kCFTypeDictionaryValueCallBacks);
}

}  // namespace

CFTypeID CFAttributedStringGetTypeID(void) {
  const Gate gate{__func__};
  return gate.fails() ? 0 : stringType();
}

CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef alloc, CFStringRef str,
                                               CFDictionaryRef attributes) {
  const Gate gate{__func__};
  check(__func__, str, CFStringGetTypeID(), "string");
  if (attributes) check(__func__, attributes, CFDictionaryGetTypeID(), "dictionary");
  if (gate.fails()) return nullptr;
  const CFIndex extraBytes = sizeof(__CFAttributedString) - sizeof(CFRuntimeBase);
  const CFTypeRef made = _CFRuntimeCreateInstance(alloc, stringType(), extraBytes, nullptr);
  if (!made) return nullptr;
  auto* const string = const_cast<__CFAttributedString*>(stringOf(made));
  string->text = CFStringCreateCopy(kCFAllocatorDefault, str);
  string->attributes = copyAttributes(attributes);
  if (string->text && string->attributes) return string;
  CFRelease(string);
  return nullptr;
}

CFStringRef CFAttributedStringGetString(CFAttributedStringRef aStr) {
  const Gate gate{__func__};
  check(__func__, aStr, stringType(), "attributed string");
  return gate.fails() ? nullptr : aStr->text;
}

CFIndex CFAttributedStringGetLength(CFAttributedStringRef aStr) {
  const Gate gate{__func__};
  check(__func__, aStr, stringType(), "attributed string");
  return gate.fails() ? 0 : CFStringGetLength(aStr->text);
}

CFDictionaryRef CFAttributedStringGetAttributes(CFAttributedStringRef aStr, CFIndex loc,
                                                CFRange* effectiveRange) {
  const Gate gate{__func__};
  check(__func__, aStr, stringType(), "attributed string");
  const CFIndex length = CFStringGetLength(aStr->text);
  if (loc < 0 || loc >= length) {
    standin::die(__func__, "place " + std::to_string(loc) + " in a text of " + std::to_string(length));
  }
  if (gate.fails()) return nullptr;
  if (effectiveRange) *effectiveRange = CFRangeMake(0, length);
  return aStr->attributes;
}
