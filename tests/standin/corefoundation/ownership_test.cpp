#include "tests/standin/corefoundation/support.h"

namespace {

class Ownership : public LedgerTest {};

constexpr CFIndex kConstantCount = 0x7FFFFFFF;

TEST_F(Ownership, ANewObjectHasACountOfOneAndRetainingAddsOne) {
  const Ref<CFStringRef> string(makeString("text"));
  EXPECT_EQ(CFGetRetainCount(string), 1);
  EXPECT_EQ(CFRetain(string), string.get());
  EXPECT_EQ(CFGetRetainCount(string), 2);
  CFRelease(string);
  EXPECT_EQ(CFGetRetainCount(string), 1);
}

TEST_F(Ownership, ConstantsHaveAFixedCountThatNothingChanges) {
  const CFTypeRef constants[] = {kCFBooleanTrue,   kCFBooleanFalse,  kCFNull, kCFAllocatorSystemDefault,
                                 kCFAllocatorNull, CFSTR("constant")};
  for (const CFTypeRef constant : constants) {
    EXPECT_EQ(CFGetRetainCount(constant), kConstantCount);
    CFRetain(constant);
    for (int i = 0; i < 5; ++i) CFRelease(constant);
    EXPECT_EQ(CFGetRetainCount(constant), kConstantCount);
  }
}

TEST_F(Ownership, TheDefaultAllocatorIsNullAsOnThePlatform) {
  EXPECT_EQ(kCFAllocatorDefault, nullptr);
  EXPECT_EQ(CFGetTypeID(kCFAllocatorSystemDefault), CFAllocatorGetTypeID());
}

TEST_F(Ownership, SmallIntegersAreSharedObjects) {
  for (int value = -1; value <= 12; ++value) {
    const Ref<CFNumberRef> a(makeInt(value));
    const Ref<CFNumberRef> b(makeInt(value));
    EXPECT_EQ(a.get(), b.get()) << value;
  }
  const Ref<CFNumberRef> a(makeInt(13));
  const Ref<CFNumberRef> b(makeInt(13));
  EXPECT_NE(a.get(), b.get());
}

TEST_F(Ownership, ACopyOfAnImmutableStringIsTheSameObjectRetained) {
  const Ref<CFStringRef> string(makeString("text"));
  const Ref<CFStringRef> copy(CFStringCreateCopy(nullptr, string));
  EXPECT_EQ(copy.get(), string.get());
  EXPECT_EQ(CFGetRetainCount(string), 2);
}

TEST_F(Ownership, ACopyOfAMutableStringIsANewObject) {
  const Ref<CFStringRef> string(makeString("text"));
  const Ref<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, string));
  const Ref<CFStringRef> copy(CFStringCreateCopy(nullptr, changing));
  CFStringAppend(changing, string);
  EXPECT_EQ(utf8(copy), "text");
  EXPECT_EQ(utf8(changing), "texttext");
}

TEST_F(Ownership, AnArrayRetainsWhatItTakesAndReleasesWhatItGivesUp) {
  const Ref<CFStringRef> value(makeString("value"));
  const Ref<CFStringRef> other(makeString("other"));
  {
    const Ref<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 1, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array, value);
    CFArrayAppendValue(array, value);
    CFArrayInsertValueAtIndex(array, 0, value);
    EXPECT_EQ(CFGetRetainCount(value), 4);
    CFArraySetValueAtIndex(array, 1, other);
    EXPECT_EQ(CFGetRetainCount(value), 3);
    CFArrayRemoveValueAtIndex(array, 0);
    EXPECT_EQ(CFGetRetainCount(value), 2);
    EXPECT_EQ(CFGetRetainCount(other), 2);
    const Ref<CFArrayRef> copy(CFArrayCreateCopy(nullptr, array));
    EXPECT_NE(copy.get(), static_cast<CFArrayRef>(array.get()));
    EXPECT_EQ(CFGetRetainCount(value), 3);
    CFArrayRemoveAllValues(array);
    EXPECT_EQ(CFGetRetainCount(value), 2);
  }
  EXPECT_EQ(CFGetRetainCount(value), 1);
  EXPECT_EQ(CFGetRetainCount(other), 1);
}

TEST_F(Ownership, SettingAnArraysValueToItselfKeepsIt) {
  const Ref<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  {
    const Ref<CFStringRef> value(makeString("only owner is the array"));
    CFArrayAppendValue(array, value);
  }
  CFArraySetValueAtIndex(array, 0, CFArrayGetValueAtIndex(array, 0));
  EXPECT_EQ(utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, 0))), "only owner is the array");
}

TEST_F(Ownership, SettingADictionaryValueForAnEqualKeyReplacesTheKeyToo) {
  const Ref<CFStringRef> first(makeString("key"));
  const Ref<CFStringRef> second(makeString("key"));
  const Ref<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
      nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  CFDictionarySetValue(dictionary, first, kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(first), 2);
  CFDictionarySetValue(dictionary, second, kCFBooleanFalse);
  EXPECT_EQ(CFGetRetainCount(first), 1);
  EXPECT_EQ(CFGetRetainCount(second), 2);
  CFDictionaryAddValue(dictionary, first, kCFBooleanTrue);
  EXPECT_EQ(CFDictionaryGetValue(dictionary, first), kCFBooleanFalse);
  CFDictionaryRemoveValue(dictionary, first);
  EXPECT_EQ(CFGetRetainCount(second), 1);
  EXPECT_EQ(CFDictionaryGetCount(dictionary), 0);
}

TEST_F(Ownership, ADictionaryMadeWithDuplicateKeysKeepsTheFirst) {
  const Ref<CFStringRef> first(makeString("key"));
  const Ref<CFStringRef> second(makeString("key"));
  const void* keys[] = {first, second};
  const void* values[] = {kCFBooleanTrue, kCFBooleanFalse};
  const Ref<CFDictionaryRef> dictionary(CFDictionaryCreate(
      nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  EXPECT_EQ(CFDictionaryGetCount(dictionary), 1);
  EXPECT_EQ(CFDictionaryGetValue(dictionary, second), kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(first), 2);
  EXPECT_EQ(CFGetRetainCount(second), 1);
}

TEST_F(Ownership, TheLedgerCountsLivingObjectsByClass) {
  const long strings = standin::ledgerLine("CFString");
  const long arrays = standin::ledgerLine("CFArray");
  {
    const Ref<CFStringRef> string(makeString("text"));
    const void* values[] = {string};
    const Ref<CFArrayRef> array(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
    EXPECT_EQ(standin::ledgerLine("CFString"), strings + 1);
    EXPECT_EQ(standin::ledgerLine("CFArray"), arrays + 1);
  }
  EXPECT_EQ(standin::ledgerLine("CFString"), strings);
  EXPECT_EQ(standin::ledgerLine("CFArray"), arrays);
}

TEST_F(Ownership, ConstantsAreNotInTheLedger) {
  const long strings = standin::ledgerLine("CFString");
  const CFStringRef constant = CFSTR("never seen before");
  EXPECT_EQ(CFSTR("never seen before"), constant);
  EXPECT_EQ(standin::ledgerLine("CFString"), strings);
}

TEST_F(Ownership, AMillionShortLivedObjectsLeaveNothingBehind) {
  for (int i = 0; i < 1000000; ++i) CFRelease(makeInt(i + 100));
}

}  // namespace
