#include "tests/standin/corefoundation/support.h"

namespace {

class Ownership : public LedgerTest {};

constexpr CFIndex kConstantCount = 0x7FFFFFFF;

TEST_F(Ownership, ANewObjectHasACountOfOneAndRetainingAddsOne) {
  const auto string = makeString("text");
  EXPECT_EQ(CFGetRetainCount(string.get()), 1);
  EXPECT_EQ(CFRetain(string.get()), string.get());
  EXPECT_EQ(CFGetRetainCount(string.get()), 2);
  CFRelease(string.get());
  EXPECT_EQ(CFGetRetainCount(string.get()), 1);
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
    const auto a = makeInt(value);
    const auto b = makeInt(value);
    EXPECT_EQ(a.get(), b.get()) << value;
  }
  const auto a = makeInt(13);
  const auto b = makeInt(13);
  EXPECT_NE(a.get(), b.get());
}

TEST_F(Ownership, ACopyOfAnImmutableStringIsTheSameObjectRetained) {
  const auto string = makeString("text");
  const Owned<CFStringRef> copy(CFStringCreateCopy(nullptr, string.get()));
  EXPECT_EQ(copy.get(), string.get());
  EXPECT_EQ(CFGetRetainCount(string.get()), 2);
}

TEST_F(Ownership, ACopyOfAMutableStringIsANewObject) {
  const auto string = makeString("text");
  const Owned<CFMutableStringRef> changing(CFStringCreateMutableCopy(nullptr, 0, string.get()));
  const Owned<CFStringRef> copy(CFStringCreateCopy(nullptr, changing.get()));
  CFStringAppend(changing.get(), string.get());
  EXPECT_EQ(textOf(copy.get()), "text");
  EXPECT_EQ(textOf(changing.get()), "texttext");
}

TEST_F(Ownership, AnArrayRetainsWhatItTakesAndReleasesWhatItGivesUp) {
  const auto value = makeString("value");
  const auto other = makeString("other");
  {
    const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 1, &kCFTypeArrayCallBacks));
    CFArrayAppendValue(array.get(), value.get());
    CFArrayAppendValue(array.get(), value.get());
    CFArrayInsertValueAtIndex(array.get(), 0, value.get());
    EXPECT_EQ(CFGetRetainCount(value.get()), 4);
    CFArraySetValueAtIndex(array.get(), 1, other.get());
    EXPECT_EQ(CFGetRetainCount(value.get()), 3);
    CFArrayRemoveValueAtIndex(array.get(), 0);
    EXPECT_EQ(CFGetRetainCount(value.get()), 2);
    EXPECT_EQ(CFGetRetainCount(other.get()), 2);
    const Owned<CFArrayRef> copy(CFArrayCreateCopy(nullptr, array.get()));
    EXPECT_NE(copy.get(), static_cast<CFArrayRef>(array.get()));
    EXPECT_EQ(CFGetRetainCount(value.get()), 3);
    CFArrayRemoveAllValues(array.get());
    EXPECT_EQ(CFGetRetainCount(value.get()), 2);
  }
  EXPECT_EQ(CFGetRetainCount(value.get()), 1);
  EXPECT_EQ(CFGetRetainCount(other.get()), 1);
}

TEST_F(Ownership, SettingAnArraysValueToItselfKeepsIt) {
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  {
    const auto value = makeString("only owner is the array");
    CFArrayAppendValue(array.get(), value.get());
  }
  CFArraySetValueAtIndex(array.get(), 0, CFArrayGetValueAtIndex(array.get(), 0));
  EXPECT_EQ(textOf(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array.get(), 0))),
            "only owner is the array");
}

TEST_F(Ownership, SettingADictionaryValueForAnEqualKeyReplacesTheKeyToo) {
  const auto first = makeString("key");
  const auto second = makeString("key");
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
      nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  CFDictionarySetValue(dictionary.get(), first.get(), kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(first.get()), 2);
  CFDictionarySetValue(dictionary.get(), second.get(), kCFBooleanFalse);
  EXPECT_EQ(CFGetRetainCount(first.get()), 1);
  EXPECT_EQ(CFGetRetainCount(second.get()), 2);
  CFDictionaryAddValue(dictionary.get(), first.get(), kCFBooleanTrue);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), first.get()), kCFBooleanFalse);
  CFDictionaryRemoveValue(dictionary.get(), first.get());
  EXPECT_EQ(CFGetRetainCount(second.get()), 1);
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
}

TEST_F(Ownership, ADictionaryMadeWithDuplicateKeysKeepsTheFirst) {
  const auto first = makeString("key");
  const auto second = makeString("key");
  const void* keys[] = {first.get(), second.get()};
  const void* values[] = {kCFBooleanTrue, kCFBooleanFalse};
  const Owned<CFDictionaryRef> dictionary(CFDictionaryCreate(
      nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 1);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), second.get()), kCFBooleanTrue);
  EXPECT_EQ(CFGetRetainCount(first.get()), 2);
  EXPECT_EQ(CFGetRetainCount(second.get()), 1);
}

TEST_F(Ownership, TheLedgerCountsLivingObjectsByClass) {
  const long strings = standin::ledgerLine("CFString");
  const long arrays = standin::ledgerLine("CFArray");
  {
    const auto string = makeString("text");
    const void* values[] = {string.get()};
    const Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 1, &kCFTypeArrayCallBacks));
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
  for (int i = 0; i < 1000000; ++i) makeInt(i + 100);
}

}  // namespace
