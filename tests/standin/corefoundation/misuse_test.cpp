// What the original would punish with a crash or with silence ends the process with a message.
#include "tests/standin/corefoundation/support.h"

namespace {

class MisuseStrictness : public LedgerTest {};

CFStringRef freedString() {
  const CFStringRef string = makeString("short-lived").leak();
  CFRelease(string);
  return string;
}

TEST_F(MisuseStrictness, OverRelease) {
  EXPECT_DEATH(CFRelease(freedString()), "standin: CFRelease: a freed CFString at 0x");
}

TEST_F(MisuseStrictness, UseAfterFreeIsRecognisedThroughEveryKindOfCall) {
  EXPECT_DEATH(CFRetain(freedString()), "CFRetain: a freed CFString");
  EXPECT_DEATH(CFStringGetLength(freedString()), "CFStringGetLength: a freed CFString");
  EXPECT_DEATH(CFGetTypeID(freedString()), "CFGetTypeID: a freed CFString");
  EXPECT_DEATH(CFEqual(CFSTR("a"), freedString()), "CFEqual: a freed CFString");
  EXPECT_DEATH(CFHash(freedString()), "CFHash: a freed CFString");
  EXPECT_DEATH(CFStringCompare(CFSTR("a"), freedString(), 0), "CFStringCompare: a freed CFString");
}

TEST_F(MisuseStrictness, UseAfterFreeIsRecognisedWhileManyObjectsAreFreed) {
  const CFStringRef freed = freedString();
  for (int i = 0; i < 20000; ++i) makeInt(i + 100);
  EXPECT_DEATH(CFStringGetLength(freed), "a freed CFString");
}

TEST_F(MisuseStrictness, NullWhereThePlatformTraps) {
  EXPECT_DEATH(CFRelease(nullptr), "standin: CFRelease: null");
  EXPECT_DEATH(CFRetain(nullptr), "standin: CFRetain: null");
  EXPECT_DEATH(CFGetTypeID(nullptr), "standin: CFGetTypeID: null");
  EXPECT_DEATH(CFEqual(nullptr, CFSTR("a")), "standin: CFEqual: null");
  EXPECT_DEATH(CFStringGetLength(nullptr), "CFStringGetLength: null where a CFString is needed");
  EXPECT_DEATH(CFArrayGetCount(nullptr), "CFArrayGetCount: null where a CFArray is needed");
  EXPECT_DEATH(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), "null text");
}

TEST_F(MisuseStrictness, AnObjectOfAnotherType) {
  EXPECT_DEATH(CFStringGetLength(reinterpret_cast<CFStringRef>(kCFBooleanTrue)),
               "CFStringGetLength: a CFBoolean at 0x.* where a CFString is needed");
  EXPECT_DEATH(CFNumberGetType(reinterpret_cast<CFNumberRef>(CFSTR("7"))), "a CFString at 0x");
  EXPECT_DEATH(CFArrayGetCount(reinterpret_cast<CFArrayRef>(kCFNull)), "a CFNull at 0x");
  EXPECT_DEATH(CFStringCreateWithCString(reinterpret_cast<CFAllocatorRef>(kCFNull), "a", 0),
               "a CFNull at 0x");
}

TEST_F(MisuseStrictness, WhatIsNoObject) {
  const int words[4] = {};
  EXPECT_DEATH(CFRelease(words), "CFRelease: no object at 0x");
  EXPECT_DEATH(CFRelease(reinterpret_cast<const char*>(words) + 1), "CFRelease: no object at 0x");
}

TEST_F(MisuseStrictness, NullInACollectionOfObjects) {
  const void* values[] = {nullptr};
  EXPECT_DEATH(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks), "CFArrayCreate: a null value");
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  EXPECT_DEATH(CFArrayAppendValue(array.get(), nullptr), "CFArrayAppendValue: a null value");
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
      nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  EXPECT_DEATH(CFDictionarySetValue(dictionary.get(), CFSTR("key"), nullptr), "a null value");
  EXPECT_DEATH(CFDictionarySetValue(dictionary.get(), nullptr, CFSTR("value")), "a null key");
  EXPECT_DEATH(CFDictionaryGetValue(dictionary.get(), nullptr), "a null key");
}

TEST_F(MisuseStrictness, IndexesOutsideOfAnArray) {
  const void* values[] = {kCFNull};
  const Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
  EXPECT_DEATH(CFArrayGetValueAtIndex(array.get(), 1), "CFArrayGetValueAtIndex: index 1 in an array of 1");
  EXPECT_DEATH(CFArrayGetValueAtIndex(array.get(), -1), "index -1 in an array of 1");
  EXPECT_DEATH(CFArrayContainsValue(array.get(), {0, 2}, kCFNull), "range 0\\+2 in an array of 1");
}

TEST_F(MisuseStrictness, RangesOutsideOfAString) {
  UniChar unit;
  EXPECT_DEATH(CFStringGetCharacterAtIndex(CFSTR("abc"), 3), "outside of length 3");
  EXPECT_DEATH(CFStringGetCharacters(CFSTR("abc"), {3, 1}, &unit), "outside of length 3");
  EXPECT_DEATH(CFStringCreateWithSubstring(nullptr, CFSTR("abc"), {-1, 1}), "outside of length 3");
}

TEST_F(MisuseStrictness, ChangingWhatIsImmutable) {
  const auto string = makeString("text");
  EXPECT_DEATH(CFStringAppend(const_cast<CFMutableStringRef>(string.get()), string.get()),
               "the string is immutable");
  const Owned<CFArrayRef> array(CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks));
  EXPECT_DEATH(CFArrayAppendValue(const_cast<CFMutableArrayRef>(array.get()), string.get()),
               "the array is immutable");
  const Owned<CFDictionaryRef> dictionary(CFDictionaryCreate(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
  EXPECT_DEATH(
      CFDictionarySetValue(const_cast<CFMutableDictionaryRef>(dictionary.get()), string.get(), string.get()),
      "the dictionary is immutable");
}

TEST_F(MisuseStrictness, GrowingAStringBeyondItsMaximum) {
  const Owned<CFMutableStringRef> string(CFStringCreateMutable(nullptr, 3));
  CFStringAppend(string.get(), CFSTR("abc"));
  EXPECT_DEATH(CFStringAppend(string.get(), CFSTR("d")), "length 4 is above the string's maximum of 3");
}

TEST_F(MisuseStrictness, NumberTypesThatDontExist) {
  int value = 0;
  EXPECT_DEATH(CFNumberCreate(nullptr, 17, &value), "number type 17 doesn't exist");
  EXPECT_DEATH(CFNumberCreate(nullptr, 0, &value), "number type 0 doesn't exist");
}

TEST_F(MisuseStrictness, ChangingADictionaryWhileAFunctionIsAppliedToIt) {
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
      nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  CFDictionarySetValue(dictionary.get(), CFSTR("key"), CFSTR("value"));
  const auto adds = [](const void*, const void*, void* context) {
    CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(context), CFSTR("another"), CFSTR("value"));
  };
  EXPECT_DEATH(CFDictionaryApplyFunction(dictionary.get(), adds, dictionary.get()), "changed the dictionary");
}

TEST_F(MisuseStrictness, AReleaseTooManyByACollectionNamesTheOuterCall) {
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  const CFStringRef string = makeString("given away twice").leak();
  CFArrayAppendValue(array.get(), string);
  EXPECT_DEATH(
      {
        CFRelease(string);
        CFRelease(string);
        CFArrayRemoveAllValues(array.get());
      },
      "CFArrayRemoveAllValues: a freed CFString");
  CFRelease(string);
}

}  // namespace
