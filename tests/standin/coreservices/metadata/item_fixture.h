// Items of a test's own files, and their values as plain ones.
#pragma once

#include <string>
#include <vector>

#include "tests/standin/coreservices/metadata/fixture.h"

class ItemTest : public MetadataTest {
 protected:
  static Owned<MDItemRef> make(const std::string& path) {
    return Owned(MDItemCreateWithURL(kCFAllocatorDefault, makeURL(path).get()));
  }
  static Owned<CFTypeRef> get(const Owned<MDItemRef>& item, CFStringRef name) {
    return Owned(MDItemCopyAttribute(item.get(), name));
  }
  static std::string text(const Owned<MDItemRef>& item, CFStringRef name) {
    return textOf(get(item, name).get());
  }
  static std::vector<std::string> texts(const Owned<MDItemRef>& item, CFStringRef name) {
    return textsOf(get(item, name).get());
  }
  static long long number(const Owned<MDItemRef>& item, CFStringRef name) {
    const auto value = get(item, name);
    long long result = -1;
    if (!value || CFGetTypeID(value.get()) != CFNumberGetTypeID()) return -1;
    CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberSInt64Type, &result);
    return result;
  }
  static double real(const Owned<MDItemRef>& item, CFStringRef name) {
    const auto value = get(item, name);
    double result = -1;
    if (!value || CFGetTypeID(value.get()) != CFNumberGetTypeID()) return -1;
    CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberDoubleType, &result);
    return result;
  }
  static double date(const Owned<MDItemRef>& item, CFStringRef name) {
    const auto value = get(item, name);
    if (!value || CFGetTypeID(value.get()) != CFDateGetTypeID()) return -1;
    return CFDateGetAbsoluteTime(static_cast<CFDateRef>(value.get()));
  }
  static std::vector<std::string> textsOf(CFTypeRef array) {
    std::vector<std::string> result;
    if (!array || CFGetTypeID(array) != CFArrayGetTypeID()) return {"(no array)"};
    const auto strings = static_cast<CFArrayRef>(array);
    for (CFIndex i = 0; i < CFArrayGetCount(strings); ++i) {
      result.push_back(textOf(CFArrayGetValueAtIndex(strings, i)));
    }
    return result;
  }
};
