#include <set>
#include <vector>

#include "tests/standin/corefoundation/support.h"

namespace {

class Collections : public LedgerTest {};

CFMutableDictionaryRef makeDictionary() {
  return CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                   &kCFTypeDictionaryValueCallBacks);
}

TEST_F(Collections, AnArrayKeepsItsOrderThroughInsertionsAndRemovals) {
  const Ref<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, nullptr));
  const auto value = [](size_t i) { return reinterpret_cast<const void*>(i); };
  for (size_t i = 1; i <= 100; ++i) CFArrayAppendValue(array, value(i));
  CFArrayInsertValueAtIndex(array, 0, value(1000));
  CFArrayInsertValueAtIndex(array, 50, value(2000));
  CFArrayRemoveValueAtIndex(array, 1);
  ASSERT_EQ(CFArrayGetCount(array), 101);
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), value(1000));
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 1), value(2));
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 49), value(2000));
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 100), value(100));
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, {0, 101}, value(2000)), 49);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, {50, 51}, value(2000)), kCFNotFound);
  EXPECT_FALSE(CFArrayContainsValue(array, {0, 101}, value(1)));
}

TEST_F(Collections, AnArrayOfPlainPointersMayHoldNull) {
  const void* values[] = {nullptr, nullptr};
  const Ref<CFArrayRef> array(CFArrayCreate(nullptr, values, 2, nullptr));
  EXPECT_EQ(CFArrayGetValueAtIndex(array, 1), nullptr);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, {0, 2}, nullptr), 0);
}

TEST_F(Collections, ArraysFindEqualValuesNotOnlyTheSame) {
  const Ref<CFStringRef> a(makeString("value"));
  const Ref<CFStringRef> b(makeString("value"));
  const void* x[] = {a};
  const void* y[] = {b};
  const Ref<CFArrayRef> first(CFArrayCreate(nullptr, x, 1, &kCFTypeArrayCallBacks));
  const Ref<CFArrayRef> second(CFArrayCreate(nullptr, y, 1, &kCFTypeArrayCallBacks));
  EXPECT_TRUE(CFArrayContainsValue(first, {0, 1}, b));
  EXPECT_TRUE(CFEqual(first, second));
  EXPECT_EQ(CFHash(first), CFHash(second));
}

TEST_F(Collections, SettingAnArraysValueBehindTheLastAppends) {
  const Ref<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  CFArraySetValueAtIndex(array, 0, kCFNull);
  EXPECT_EQ(CFArrayGetCount(array), 1);
}

struct Counts {
  int retains = 0;
  int releases = 0;
};
Counts counts;
const void* countRetain(CFAllocatorRef, const void* value) {
  ++counts.retains;
  return value;
}
void countRelease(CFAllocatorRef, const void*) {
  ++counts.releases;
}

TEST_F(Collections, CallbacksOfTheCallersOwnAreUsed) {
  counts = {};
  const CFArrayCallBacks callBacks = {0, countRetain, countRelease, nullptr, nullptr};
  {
    const Ref<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &callBacks));
    CFArrayAppendValue(array, "a");
    CFArrayAppendValue(array, "b");
    const Ref<CFArrayRef> copy(CFArrayCreateCopy(nullptr, array));
    EXPECT_EQ(counts.retains, 4);
    CFArrayRemoveValueAtIndex(array, 0);
    EXPECT_EQ(counts.releases, 1);
  }
  EXPECT_EQ(counts.releases, 4);
}

TEST_F(Collections, ADictionaryFindsWhatItHoldsThroughThousandsOfChanges) {
  const Ref<CFMutableDictionaryRef> dictionary(makeDictionary());
  std::set<int> model;
  unsigned random = 1;
  for (int step = 0; step < 20000; ++step) {
    random = random * 1103515245U + 12345U;
    const int number = static_cast<int>(random >> 16) % 997;
    const Ref<CFNumberRef> key(makeInt(number));
    if ((random & 0x8000) != 0) {
      CFDictionarySetValue(dictionary, key, key);
      model.insert(number);
    } else {
      CFDictionaryRemoveValue(dictionary, key);
      model.erase(number);
    }
    ASSERT_EQ(CFDictionaryGetCount(dictionary), static_cast<CFIndex>(model.size()));
  }
  for (int number = 0; number < 997; ++number) {
    const Ref<CFNumberRef> key(makeInt(number));
    ASSERT_EQ(static_cast<bool>(CFDictionaryContainsKey(dictionary, key)), model.count(number) == 1)
        << number;
  }
  const Ref<CFDictionaryRef> copy(CFDictionaryCreateCopy(nullptr, dictionary));
  EXPECT_TRUE(CFEqual(copy, dictionary));
  EXPECT_EQ(CFHash(copy), CFHash(dictionary));
}

TEST_F(Collections, ADictionaryFindsTheIntegerUnderTheDoubleButNotUnderTrue) {
  const Ref<CFMutableDictionaryRef> dictionary(makeDictionary());
  const Ref<CFNumberRef> integer(makeInt(1));
  const Ref<CFNumberRef> real(makeDouble(1.0));
  CFDictionarySetValue(dictionary, integer, CFSTR("one"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, real), CFSTR("one"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, kCFBooleanTrue), nullptr);
}

TEST_F(Collections, AComposedKeyIsNotFoundUnderItsDecomposedForm) {
  const Ref<CFMutableDictionaryRef> dictionary(makeDictionary());
  CFDictionarySetValue(dictionary, CFSTR("caf\u00e9"), CFSTR("value"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, CFSTR("cafe\u0301")), nullptr);
  EXPECT_EQ(CFDictionaryGetValue(dictionary, CFSTR("caf\u00e9")), CFSTR("value"));
}

TEST_F(Collections, AMutableStringFindsWhatWasStoredUnderAnImmutableOne) {
  const Ref<CFMutableDictionaryRef> dictionary(makeDictionary());
  const Ref<CFMutableStringRef> key(CFStringCreateMutableCopy(nullptr, 0, CFSTR("key")));
  CFDictionarySetValue(dictionary, CFSTR("key"), CFSTR("value"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary, key), CFSTR("value"));
}

TEST_F(Collections, KeysValuesAndAppliedFunctionsSeeEveryEntryOnce) {
  const Ref<CFMutableDictionaryRef> dictionary(makeDictionary());
  for (int i = 0; i < 50; ++i) {
    const Ref<CFNumberRef> number(makeInt(i));
    CFDictionarySetValue(dictionary, number, number);
  }
  std::vector<const void*> keys(50);
  std::vector<const void*> values(50);
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  EXPECT_EQ(keys, values);
  EXPECT_EQ(std::set<const void*>(keys.begin(), keys.end()).size(), 50U);
  std::vector<const void*> applied;
  CFDictionaryApplyFunction(
      dictionary,
      [](const void* key, const void*, void* context) {
        static_cast<std::vector<const void*>*>(context)->push_back(key);
      },
      &applied);
  EXPECT_EQ(applied, keys);
}

TEST_F(Collections, PresentButNullIsToldFromAbsent) {
  const Ref<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
  CFDictionarySetValue(dictionary, nullptr, nullptr);
  const void* value = "untouched";
  EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary, nullptr, &value));
  EXPECT_EQ(value, nullptr);
  value = "untouched";
  EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary, "another", &value));
  EXPECT_STREQ(static_cast<const char*>(value), "untouched");
  CFDictionaryRemoveAllValues(dictionary);
  EXPECT_EQ(CFDictionaryGetCount(dictionary), 0);
}

TEST_F(Collections, DataKeepsItsBytes) {
  const UInt8 bytes[] = {0, 1, 2, 255};
  const Ref<CFDataRef> data(CFDataCreate(nullptr, bytes, sizeof bytes));
  const Ref<CFDataRef> same(CFDataCreate(nullptr, bytes, sizeof bytes));
  const Ref<CFDataRef> shorter(CFDataCreate(nullptr, bytes, 3));
  EXPECT_EQ(CFDataGetLength(data), 4);
  EXPECT_EQ(CFDataGetBytePtr(data)[3], 255);
  EXPECT_TRUE(CFEqual(data, same));
  EXPECT_EQ(CFHash(data), CFHash(same));
  EXPECT_FALSE(CFEqual(data, shorter));
}

}  // namespace
