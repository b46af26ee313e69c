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
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, nullptr));
  const auto value = [](size_t i) { return reinterpret_cast<const void*>(i); };
  for (size_t i = 1; i <= 100; ++i) CFArrayAppendValue(array.get(), value(i));
  CFArrayInsertValueAtIndex(array.get(), 0, value(1000));
  CFArrayInsertValueAtIndex(array.get(), 50, value(2000));
  CFArrayRemoveValueAtIndex(array.get(), 1);
  ASSERT_EQ(CFArrayGetCount(array.get()), 101);
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 0), value(1000));
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), value(2));
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 49), value(2000));
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 100), value(100));
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {0, 101}, value(2000)), 49);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {50, 51}, value(2000)), kCFNotFound);
  EXPECT_FALSE(CFArrayContainsValue(array.get(), {0, 101}, value(1)));
}

TEST_F(Collections, AnArrayOfPlainPointersMayHoldNull) {
  const void* values[] = {nullptr, nullptr};
  const Owned<CFArrayRef> array(CFArrayCreate(nullptr, values, 2, nullptr));
  EXPECT_EQ(CFArrayGetValueAtIndex(array.get(), 1), nullptr);
  EXPECT_EQ(CFArrayGetFirstIndexOfValue(array.get(), {0, 2}, nullptr), 0);
}

TEST_F(Collections, ArraysFindEqualValuesNotOnlyTheSame) {
  const auto a = makeString("value");
  const auto b = makeString("value");
  const void* x[] = {a.get()};
  const void* y[] = {b.get()};
  const Owned<CFArrayRef> first(CFArrayCreate(nullptr, x, 1, &kCFTypeArrayCallBacks));
  const Owned<CFArrayRef> second(CFArrayCreate(nullptr, y, 1, &kCFTypeArrayCallBacks));
  EXPECT_TRUE(CFArrayContainsValue(first.get(), {0, 1}, b.get()));
  EXPECT_TRUE(CFEqual(first.get(), second.get()));
  EXPECT_EQ(CFHash(first.get()), CFHash(second.get()));
}

TEST_F(Collections, SettingAnArraysValueBehindTheLastAppends) {
  const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  CFArraySetValueAtIndex(array.get(), 0, kCFNull);
  EXPECT_EQ(CFArrayGetCount(array.get()), 1);
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
    const Owned<CFMutableArrayRef> array(CFArrayCreateMutable(nullptr, 0, &callBacks));
    CFArrayAppendValue(array.get(), "a");
    CFArrayAppendValue(array.get(), "b");
    const Owned<CFArrayRef> copy(CFArrayCreateCopy(nullptr, array.get()));
    EXPECT_EQ(counts.retains, 4);
    CFArrayRemoveValueAtIndex(array.get(), 0);
    EXPECT_EQ(counts.releases, 1);
  }
  EXPECT_EQ(counts.releases, 4);
}

TEST_F(Collections, ADictionaryFindsWhatItHoldsThroughThousandsOfChanges) {
  const Owned<CFMutableDictionaryRef> dictionary(makeDictionary());
  std::set<int> model;
  unsigned random = 1;
  for (int step = 0; step < 20000; ++step) {
    random = random * 1103515245U + 12345U;
    const int number = static_cast<int>(random >> 16) % 997;
    const auto key = makeInt(number);
    if ((random & 0x8000) != 0) {
      CFDictionarySetValue(dictionary.get(), key.get(), key.get());
      model.insert(number);
    } else {
      CFDictionaryRemoveValue(dictionary.get(), key.get());
      model.erase(number);
    }
    ASSERT_EQ(CFDictionaryGetCount(dictionary.get()), static_cast<CFIndex>(model.size()));
  }
  for (int number = 0; number < 997; ++number) {
    const auto key = makeInt(number);
    ASSERT_EQ(static_cast<bool>(CFDictionaryContainsKey(dictionary.get(), key.get())),
              model.count(number) == 1)
        << number;
  }
  const Owned<CFDictionaryRef> copy(CFDictionaryCreateCopy(nullptr, dictionary.get()));
  EXPECT_TRUE(CFEqual(copy.get(), dictionary.get()));
  EXPECT_EQ(CFHash(copy.get()), CFHash(dictionary.get()));
}

TEST_F(Collections, ADictionaryFindsTheIntegerUnderTheDoubleButNotUnderTrue) {
  const Owned<CFMutableDictionaryRef> dictionary(makeDictionary());
  const auto integer = makeInt(1);
  const auto real = makeDouble(1.0);
  CFDictionarySetValue(dictionary.get(), integer.get(), CFSTR("one"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), real.get()), CFSTR("one"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), kCFBooleanTrue), nullptr);
}

TEST_F(Collections, AComposedKeyIsNotFoundUnderItsDecomposedForm) {
  const Owned<CFMutableDictionaryRef> dictionary(makeDictionary());
  CFDictionarySetValue(dictionary.get(), CFSTR("caf\u00e9"), CFSTR("value"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("cafe\u0301")), nullptr);
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), CFSTR("caf\u00e9")), CFSTR("value"));
}

TEST_F(Collections, AMutableStringFindsWhatWasStoredUnderAnImmutableOne) {
  const Owned<CFMutableDictionaryRef> dictionary(makeDictionary());
  const Owned<CFMutableStringRef> key(CFStringCreateMutableCopy(nullptr, 0, CFSTR("key")));
  CFDictionarySetValue(dictionary.get(), CFSTR("key"), CFSTR("value"));
  EXPECT_EQ(CFDictionaryGetValue(dictionary.get(), key.get()), CFSTR("value"));
}

TEST_F(Collections, KeysValuesAndAppliedFunctionsSeeEveryEntryOnce) {
  const Owned<CFMutableDictionaryRef> dictionary(makeDictionary());
  for (int i = 0; i < 50; ++i) {
    const auto number = makeInt(i);
    CFDictionarySetValue(dictionary.get(), number.get(), number.get());
  }
  std::vector<const void*> keys(50);
  std::vector<const void*> values(50);
  CFDictionaryGetKeysAndValues(dictionary.get(), keys.data(), values.data());
  EXPECT_EQ(keys, values);
  EXPECT_EQ(std::set<const void*>(keys.begin(), keys.end()).size(), 50U);
  std::vector<const void*> applied;
  CFDictionaryApplyFunction(
      dictionary.get(),
      [](const void* key, const void*, void* context) {
        static_cast<std::vector<const void*>*>(context)->push_back(key);
      },
      &applied);
  EXPECT_EQ(applied, keys);
}

TEST_F(Collections, PresentButNullIsToldFromAbsent) {
  const Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr));
  CFDictionarySetValue(dictionary.get(), nullptr, nullptr);
  const void* value = "untouched";
  EXPECT_TRUE(CFDictionaryGetValueIfPresent(dictionary.get(), nullptr, &value));
  EXPECT_EQ(value, nullptr);
  value = "untouched";
  EXPECT_FALSE(CFDictionaryGetValueIfPresent(dictionary.get(), "another", &value));
  EXPECT_STREQ(static_cast<const char*>(value), "untouched");
  CFDictionaryRemoveAllValues(dictionary.get());
  EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 0);
}

TEST_F(Collections, DataKeepsItsBytes) {
  const UInt8 bytes[] = {0, 1, 2, 255};
  const Owned<CFDataRef> data(CFDataCreate(nullptr, bytes, sizeof bytes));
  const Owned<CFDataRef> same(CFDataCreate(nullptr, bytes, sizeof bytes));
  const Owned<CFDataRef> shorter(CFDataCreate(nullptr, bytes, 3));
  EXPECT_EQ(CFDataGetLength(data.get()), 4);
  EXPECT_EQ(CFDataGetBytePtr(data.get())[3], 255);
  EXPECT_TRUE(CFEqual(data.get(), same.get()));
  EXPECT_EQ(CFHash(data.get()), CFHash(same.get()));
  EXPECT_FALSE(CFEqual(data.get(), shorter.get()));
}

}  // namespace
