#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

const char* const setterText = "Value(key As Variant, Assigns _value As Variant)";
const char* const getterText = "Value(key As Variant) As Variant";
const char* const keyText = "Key(index As Integer) As Variant";

void* load(Object object, const char* declaration) {
  return entry<void*(Object, const char*)>("REALLoadObjectMethod")(object, declaration);
}

using Setter = void (*)(Object, Object, Object);
using Getter = Object (*)(Object, Object);
using KeyGetter = Object (*)(Object, int32_t);

Setter setterOf(Object dictionary) {
  return reinterpret_cast<Setter>(load(dictionary, setterText));
}
Getter getterOf(Object dictionary) {
  return reinterpret_cast<Getter>(load(dictionary, getterText));
}
KeyGetter keyGetterOf(Object dictionary) {
  return reinterpret_cast<KeyGetter>(load(dictionary, keyText));
}

Object int32(int32_t value) {
  return entry<Object(int32_t)>("Int32ToVariant")(value);
}

int32_t takeInt32(Object variant) {
  const int32_t value = entry<int32_t(Object)>("VariantToInt32")(variant);
  unlockObject(variant);
  return value;
}

int32_t count(Object dictionary) {
  int32_t count = -1;
  entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(dictionary, "Count", &count);
  return count;
}

class Dictionaries : public HostTest {
 protected:
  Dictionaries() { GTEST_FLAG_SET(death_test_style, "fast"); }
};

TEST_F(Dictionaries, AreFilledAndReadByTheMethodsOfTheirDeclarations) {
  const Object dictionary = newInstance("Dictionary");
  const Setter set = setterOf(dictionary);
  for (const int32_t i : {30, 10, 20}) {
    const Object key = int32(i), value = int32(i * 2);
    set(dictionary, key, value);
    unlockObject(key);
    unlockObject(value);
  }
  EXPECT_EQ(count(dictionary), 3);
  EXPECT_EQ(takeInt32(keyGetterOf(dictionary)(dictionary, 0)), 30);
  EXPECT_EQ(takeInt32(keyGetterOf(dictionary)(dictionary, 2)), 20);
  const Object key = int32(10);
  EXPECT_EQ(takeInt32(getterOf(dictionary)(dictionary, key)), 20);
  unlockObject(key);
  unlockObject(dictionary);
}

TEST_F(Dictionaries, GiveTheirMethodsForTheExactTextOnly) {
  const auto dictionary = host::dictionary();
  for (const char* const text : {"value(key As Variant) As Variant", "Value(key as Variant) As Variant",
                                 "Value( key As Variant) As Variant", "Key(index As Int32) As Variant"}) {
    EXPECT_EQ(load(dictionary.handle(), text), nullptr) << text;
  }
  EXPECT_EQ(load(host::newInstance("Date").handle(), getterText), nullptr);
  host::settings().unloadableMethods = {getterText};
  EXPECT_EQ(load(dictionary.handle(), getterText), nullptr);
  EXPECT_NE(load(dictionary.handle(), keyText), nullptr);
}

TEST_F(Dictionaries, HaveMethodsOfTheirOwn) {
  const auto one = host::dictionary({{"a", 1}}), other = host::dictionary({{"b", 2}});
  const KeyGetter keyOfOne = keyGetterOf(one.handle()), keyOfOther = keyGetterOf(other.handle());
  EXPECT_NE(keyOfOne, keyOfOther);
  const host::Value key("a");
  EXPECT_DEATH(keyOfOne(other.handle(), 0), "Dictionary key: the method was not loaded from this dictionary");
  EXPECT_DEATH(getterOf(one.handle())(other.handle(), nullptr), "Dictionary get: the method was not loaded");
  EXPECT_DEATH(setterOf(one.handle())(other.handle(), nullptr, nullptr),
               "Dictionary set: the method was not");
  EXPECT_DEATH(keyOfOne(host::newInstance("Date").handle(), 0),
               "Dictionary key: the object Date was passed where a Dictionary is expected");
  EXPECT_DEATH(getterOf(one.handle())(one.handle(), key.handle()), "a string was passed where an object");
}

TEST_F(Dictionaries, EndWithTheirMethods) {
  const Object dictionary = newInstance("Dictionary");
  const KeyGetter key = keyGetterOf(dictionary);
  unlockObject(dictionary);
  EXPECT_DEATH(key(dictionary, 0), "Dictionary key: use of a freed handle \\(it was a object Dictionary\\)");
}

TEST_F(Dictionaries, MayStandWhereAnotherOneStoodWithMethodsOfTheirOwn) {
  host::settings().reusesAddresses = true;
  const Object first = newInstance("Dictionary");
  const KeyGetter stale = keyGetterOf(first);
  unlockObject(first);
  const Object second = newInstance("Dictionary");
  EXPECT_EQ(second, first);
  EXPECT_DEATH(stale(second, 0), "Dictionary key: the method was not loaded from this dictionary");
  EXPECT_EQ(count(second), 0);
  unlockObject(second);
}

TEST_F(Dictionaries, KnowEqualKeysAsTheHostLanguageDoes) {
  const auto object = host::newInstance("Dictionary");
  const auto dictionary = host::dictionary({{"Strasse", 1},
                                            {5, 2},
                                            {2.5, 3},
                                            {true, 4},
                                            {host::date(2001, 1, 1), 5},
                                            {object, 6},
                                            {nullptr, 7},
                                            {"\xC3\x89t\xC3\xA9", 8},
                                            {host::Value::color(5), 9}});
  const auto found = [&](const host::Value& key) {
    const auto value = host::lookUp(dictionary, key);
    return value ? value->integer() : 0;
  };
  EXPECT_EQ(found("STRASSE"), 1);
  EXPECT_EQ(found(int64_t{5}), 2);
  EXPECT_EQ(found(5.0), 2);
  EXPECT_EQ(found(2.5f), 3);
  EXPECT_EQ(found(true), 4);
  EXPECT_EQ(found(host::date(2001, 1, 1)), 5);
  EXPECT_EQ(found(object), 6);
  EXPECT_EQ(found(nullptr), 7);
  EXPECT_EQ(found("\xC3\xA9T\xC3\x89"), 8);
  EXPECT_EQ(found(host::Value::color(5)), 9);
  for (const host::Value& other : {host::Value("5"), host::Value(false), host::Value(1),
                                   host::newInstance("Dictionary"), host::date(2001, 1, 1, 1)}) {
    EXPECT_EQ(found(other), 0) << other.describe();
  }
}

TEST_F(Dictionaries, KeepTheFirstKeyAndTheLastValue) {
  const auto dictionary = host::dictionary({{"a", 1}, {"b", nullptr}, {"A", 3}});
  const auto entries = host::entries(dictionary);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].first.text(), "a");
  EXPECT_EQ(entries[0].second.integer(), 3);
  EXPECT_TRUE(entries[1].second.isNil());
  EXPECT_EQ(host::get(dictionary, "Count").integer(), 2);
  EXPECT_THROW(host::set(dictionary, "Count", 1), host::CallError);
}

TEST_F(Dictionaries, WhatIsNotThereRaises) {
  const auto dictionary = host::dictionary({{"a", 1}});
  const Object key = int32(1);
  EXPECT_EQ(getterOf(dictionary.handle())(dictionary.handle(), key), nullptr);
  unlockObject(key);
  for (const int32_t index : {-1, 1}) {
    EXPECT_EQ(keyGetterOf(dictionary.handle())(dictionary.handle(), index), nullptr);
  }
  const auto raised = host::takeExceptions();
  ASSERT_EQ(raised.size(), 3u);
  EXPECT_EQ(raised[0].className, "KeyNotFoundException");
  EXPECT_EQ(raised[2].className, "OutOfBoundsException");
}

TEST_F(Dictionaries, APlannedFailureGivesTheNeutralValue) {
  const auto dictionary = host::dictionary({{1, 1}});
  const Object key = int32(1), other = int32(2);
  standin::failCall("Dictionary get", 1);
  EXPECT_EQ(getterOf(dictionary.handle())(dictionary.handle(), key), nullptr);
  standin::failCall("Dictionary key", 1);
  EXPECT_EQ(keyGetterOf(dictionary.handle())(dictionary.handle(), 0), nullptr);
  standin::failCall("Dictionary set", 1);
  setterOf(dictionary.handle())(dictionary.handle(), other, key);
  standin::clearFailures();
  EXPECT_EQ(count(dictionary.handle()), 1);
  EXPECT_TRUE(host::takeExceptions().empty());
  unlockObject(key);
  unlockObject(other);
}

TEST_F(Dictionaries, EntriesOfAnythingElseAreRefused) {
  EXPECT_THROW(host::entries(host::newInstance("Date")), host::CallError);
  EXPECT_THROW(host::entries(nullptr), host::CallError);
}

}  // namespace
}  // namespace fake
