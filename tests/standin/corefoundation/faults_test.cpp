// Calls that a test chose to fail.
#include <functional>
#include <vector>

#include "tests/standin/corefoundation/support.h"

namespace {

class Faults : public LedgerTest {};

struct Creator {
  const char* name;
  std::function<CFTypeRef()> make;
};

std::vector<Creator> creators() {
  static const int value = 1000;
  static const UniChar unit = 'x';
  static const UInt8 byte = 7;
  static const void* values[] = {kCFNull};
  return {
      {"CFStringCreateWithCString",
       [] { return CFStringCreateWithCString(nullptr, "text", kCFStringEncodingUTF8); }},
      {"CFStringCreateWithBytes",
       [] { return CFStringCreateWithBytes(nullptr, &byte, 1, kCFStringEncodingUTF8, false); }},
      {"CFStringCreateWithCharacters", [] { return CFStringCreateWithCharacters(nullptr, &unit, 1); }},
      {"CFStringCreateWithSubstring",
       [] {
         return CFStringCreateWithSubstring(nullptr, CFSTR("text"), {1, 2});
       }},
      {"CFStringCreateCopy", [] { return CFStringCreateCopy(nullptr, CFSTR("text")); }},
      {"CFStringCreateMutable", [] { return CFStringCreateMutable(nullptr, 0); }},
      {"CFStringCreateMutableCopy", [] { return CFStringCreateMutableCopy(nullptr, 0, CFSTR("text")); }},
      {"CFNumberCreate", [] { return CFNumberCreate(nullptr, kCFNumberIntType, &value); }},
      {"CFDateCreate", [] { return CFDateCreate(nullptr, 0); }},
      {"CFDataCreate", [] { return CFDataCreate(nullptr, &byte, 1); }},
      {"CFArrayCreate", [] { return CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks); }},
      {"CFArrayCreateMutable", [] { return CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks); }},
      {"CFDictionaryCreate",
       [] {
         return CFDictionaryCreate(nullptr, values, values, 1, &kCFTypeDictionaryKeyCallBacks,
                                   &kCFTypeDictionaryValueCallBacks);
       }},
      {"CFDictionaryCreateMutable", [] { return CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr); }},
      {"CFURLCreateWithString", [] { return CFURLCreateWithString(nullptr, CFSTR("file:///a"), nullptr); }},
      {"CFURLCreateWithFileSystemPath",
       [] { return CFURLCreateWithFileSystemPath(nullptr, CFSTR("/a"), kCFURLPOSIXPathStyle, false); }},
      {"CFCopyTypeIDDescription", [] { return CFCopyTypeIDDescription(7); }},
  };
}

TEST_F(Faults, EveryCreatorAnswersNullOnceAndThenWorksAgain) {
  for (const Creator& creator : creators()) {
    standin::failCall(creator.name, 1);
    EXPECT_EQ(creator.make(), nullptr) << creator.name;
    EXPECT_EQ(standin::failuresFired(), 1) << creator.name;
    const Owned<CFTypeRef> object(creator.make());
    EXPECT_NE(object.get(), nullptr) << creator.name;
  }
}

TEST_F(Faults, NoMemoryGivesNull) {
  EXPECT_EQ(CFStringCreateWithCString(kCFAllocatorNull, "text", kCFStringEncodingUTF8), nullptr);
  EXPECT_EQ(CFArrayCreateMutable(kCFAllocatorNull, 0, nullptr), nullptr);
}

TEST_F(Faults, AFaultedReleaseStillReleases) {
  const CFStringRef string = makeString("text").leak();
  standin::failCall("CFRelease", 1);
  CFRelease(string);
  EXPECT_EQ(standin::failuresFired(), 1);
}

TEST_F(Faults, AFaultedRetainStillRetains) {
  const auto string = makeString("text");
  standin::failCall("CFRetain", 1);
  EXPECT_EQ(CFRetain(string.get()), string.get());
  EXPECT_EQ(CFGetRetainCount(string.get()), 2);
  CFRelease(string.get());
}

TEST_F(Faults, AFaultedGetterGivesItsNeutralAnswerAndAFaultedProcedureDoesNothing) {
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  standin::failCall("CFArrayAppendValue", 1);
  CFArrayAppendValue(array.get(), kCFNull);
  EXPECT_EQ(CFArrayGetCount(array.get()), 0);
  CFArrayAppendValue(array.get(), kCFNull);
  standin::failCall("CFArrayGetCount", 1);
  EXPECT_EQ(CFArrayGetCount(array.get()), 0);
  EXPECT_EQ(CFArrayGetCount(array.get()), 1);
  standin::failCall("CFArrayGetValueAtIndex", 1);
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 0), nullptr);
}

TEST_F(Faults, OnlyOuterCallsAreLogged) {
  standin::startLog();
  {
    const void* values[] = {CFSTR("constant strings are no calls")};
    const Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
    CFEqual(array.get(), array.get());
  }
  const std::vector<std::string> expected = {"CFArrayCreate", "CFEqual", "CFRelease"};
  EXPECT_EQ(standin::stopLog(), expected);
}

TEST_F(Faults, WhatAnAppliedFunctionCallsIsLogged) {
  const void* values[] = {CFSTR("value")};
  const Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
  standin::startLog();
  CFArrayApplyFunction(
      array.get(), {0, 1}, [](const void* value, void*) { CFGetTypeID(value); }, nullptr);
  const std::vector<std::string> expected = {"CFArrayApplyFunction", "CFGetTypeID"};
  EXPECT_EQ(standin::stopLog(), expected);
}

}  // namespace
