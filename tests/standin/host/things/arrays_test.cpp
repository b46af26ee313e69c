#include "tests/standin/host/fake_plugin.h"
#include "tests/support/memory_fault.h"
#include "tests/support/texts.h"

namespace fake {
namespace {

int32_t upperBound(Object array) {
  return entry<int32_t(Object)>("RuntimeUBound")(array);
}

template <class T>
T read(Object array, int32_t index) {
  T value{};
  void* const procedure = entry<void*(Object)>("RuntimeArrayDirectGetGetProc")(array);
  if (procedure) reinterpret_cast<bool (*)(Object, int32_t, T*)>(procedure)(array, index, &value);
  return value;
}

class Arrays : public HostTest {
 protected:
  explicit Arrays(double version = 2013.9) : HostTest(settingsFor(version)) {}

  static host::Settings settingsFor(double version) {
    host::Settings settings;
    settings.version = version;
    return settings;
  }
  static uint32_t storageWord(Object array) { return static_cast<const uint32_t*>(array)[2]; }
  static Object* storage(Object array) { return reinterpret_cast<Object*>(storageWord(array)); }
};

TEST_F(Arrays, AreMadeEmptyAndFilledByInserting) {
  const Object array = createArray(3, -1);
  EXPECT_EQ(upperBound(array), -1);
  for (const char* const text : {"b", "c"}) {
    const String string = build(text);
    insertString(array, upperBound(array) + 1, string);
    unlockString(string);
  }
  const String first = build("a");
  insertString(array, 0, first);
  unlockString(first);
  EXPECT_EQ(upperBound(array), 2);
  EXPECT_EQ(standin::ledgerLine("host string lock"), 0);  // the array holds them
  const String second = entry<String(Object, int32_t)>("RuntimeDirectReadStringArray")(array, 1);
  EXPECT_EQ(content(second), "b");
  unlockString(second);
  unlockObject(array);
}

TEST_F(Arrays, GrowAndKeepTheirElements) {
  const Object array = createArray(4, -1);
  for (int32_t i = 0; i < 100; ++i) {
    const Object number = entry<Object(int32_t)>("Int32ToVariant")(i);
    insertObject(array, i, number);
    unlockObject(number);
  }
  const Object last = read<Object>(array, 99);
  EXPECT_EQ(entry<int32_t(Object)>("VariantToInt32")(last), 99);
  unlockObject(last);
  unlockObject(array);
}

TEST_F(Arrays, GiveOutNumbersByTheirReadProcedure) {
  EXPECT_EQ(read<int32_t>(host::int32Array({1, -2}).handle(), 1), -2);
  EXPECT_EQ(read<int64_t>(host::int64Array({1, int64_t{1} << 40}).handle(), 1), int64_t{1} << 40);
  EXPECT_EQ(read<float>(host::singleArray({1, 2.5f}).handle(), 1), 2.5f);
  EXPECT_EQ(read<double>(host::doubleArray({1, 2.5}).handle(), 1), 2.5);
  EXPECT_EQ(read<uint8_t>(host::booleanArray({false, true}).handle(), 1), 1);
}

TEST_F(Arrays, ShowTheirElementsInTheThirdWord) {
  const auto array = host::stringArray({"a", "b"});
  const String second = storage(array.handle())[1];
  lockString(second);
  EXPECT_EQ(content(second), "b");
  unlockString(second);
}

TEST_F(Arrays, TakeWhatThePlugInStoresDirectly) {
  const Object array = createArray(4, 1);
  const Object number = entry<Object(int32_t)>("Int32ToVariant")(7);
  lockObject(number);
  storage(array)[1] = number;
  unlockObject(number);
  const Object again = read<Object>(array, 1);
  EXPECT_EQ(again, number);
  unlockObject(again);
  unlockObject(array);
}

Object number(int32_t value) {
  return entry<Object(int32_t)>("Int32ToVariant")(value);
}

// Lock the new one, release the old one, put the new one in its place.
TEST_F(Arrays, ElementsThatAreReplacedDirectlyEndWithTheirUnlock) {
  const Object array = createArray(4, 0);
  for (const int32_t value : {7, 8, 9}) {
    const Object variant = number(value);
    lockObject(variant);
    unlockObject(storage(array)[0]);
    storage(array)[0] = variant;
    unlockObject(variant);
    EXPECT_EQ(standin::ledgerLine("host object"), 2) << value;  // the array and the element
  }
  const Object last = read<Object>(array, 0);
  EXPECT_EQ(entry<int32_t(Object)>("VariantToInt32")(last), 9);
  unlockObject(last);
  unlockObject(array);
}

TEST_F(Arrays, ElementsOfTheHostMayBeReplacedDirectly) {
  const auto date = host::newInstance("Date");
  const auto array = host::objectArray({date});
  const Object variant = number(5);
  unlockObject(storage(array.handle())[0]);
  storage(array.handle())[0] = variant;
  EXPECT_EQ(host::elements(array)[0].integer(), 5);
  EXPECT_EQ(host::fields(date).year, 1987);  // host code's own reference is another one
}

TEST_F(Arrays, AnElementReleasedButLeftInItsPlaceIsFound) {
  const auto date = host::newInstance("Date");
  EXPECT_DEATH(
      {
        const auto array = host::objectArray({date});
        unlockObject(storage(array.handle())[0]);
        host::elements(array);
      },
      "element storage of an array");
}

TEST_F(Arrays, OfEveryTypeShowTheirElementsWithoutGaps) {
  const auto check = [](const host::Value& array, auto first, auto second) {
    const auto* const elements = reinterpret_cast<const decltype(first)*>(storage(array.handle()));
    EXPECT_EQ(elements[0], first);
    EXPECT_EQ(elements[1], second);
  };
  check(host::int32Array({1, -2}), int32_t{1}, int32_t{-2});
  check(host::int64Array({1, int64_t{1} << 40}), int64_t{1}, int64_t{1} << 40);
  check(host::singleArray({1, 2.5f}), 1.0f, 2.5f);
  check(host::doubleArray({1, 2.5}), 1.0, 2.5);
  check(host::booleanArray({false, true}), uint8_t{0}, uint8_t{1});
  const auto date = host::newInstance("Date");
  check(host::dateArray({nullptr, date}), static_cast<void*>(nullptr), date.handle());
}

TEST_F(Arrays, OfDatesHoldDatesAndNothingElse) {
  const auto array = host::dateArray({host::date(2001, 1, 1), nullptr});
  const Object first = read<Object>(array.handle(), 0);
  int32_t year = 0;
  EXPECT_TRUE(entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(first, "Year", &year));
  EXPECT_EQ(year, 2001);
  unlockObject(first);
  EXPECT_EQ(read<Object>(array.handle(), 1), nullptr);
  EXPECT_EQ(host::fields(host::elements(array)[0]).year, 2001);
  EXPECT_THROW(host::dateArray({5}), host::CallError);
  EXPECT_THROW(host::dateArray({host::newInstance("Dictionary")}), host::CallError);
  const auto other = host::newInstance("Dictionary");
  EXPECT_DEATH(insertObject(array.handle(), 0, other.handle()), "array insert: .* is no element");
}

TEST_F(Arrays, MayHideTheirStorage) {
  host::settings().directArrayStorage = false;
  EXPECT_EQ(storageWord(host::stringArray({"a"}).handle()), 0u);
}

class NewArrays : public Arrays {
 protected:
  NewArrays() : Arrays(2014) {}
};

TEST_F(NewArrays, HaveNoStorageThatCouldBeRead) {
  const auto array = host::stringArray({"a"});
  EXPECT_NE(storageWord(array.handle()), 0u);
  EXPECT_MEMORY_FAULT(EXPECT_EQ(*static_cast<Object volatile*>(storage(array.handle())), nullptr));
}

TEST_F(Arrays, MayLackProcedures) {
  host::settings().insertProcedures = false;
  host::settings().getProcedures = false;
  host::settings().setProcedures = false;
  const auto array = host::stringArray({"a"});
  for (const char* const name :
       {"RuntimeArrayDirectGetInsertProc", "RuntimeArrayDirectGetGetProc", "RuntimeArrayDirectGetSetProc"}) {
    EXPECT_EQ(entry<void*(Object)>(name)(array.handle()), nullptr) << name;
  }
}

TEST_F(Arrays, TakeTheArgumentsOfTheWriteProcedureInEitherOrder) {
  const auto array = host::int32Array({1, 2, 3});
  const auto ask = entry<void*(Object)>("RuntimeArrayDirectGetSetProc");
  reinterpret_cast<void (*)(Object, int32_t, int32_t)>(ask(array.handle()))(array.handle(), 20, 1);
  host::settings().setTakesValueFirst = false;
  reinterpret_cast<void (*)(Object, int32_t, int32_t)>(ask(array.handle()))(array.handle(), 2, 30);
  EXPECT_EQ(read<int32_t>(array.handle(), 1), 20);
  EXPECT_EQ(read<int32_t>(array.handle(), 2), 30);
}

TEST_F(Arrays, AnIndexOutsideRaisesAndChangesNothing) {
  const auto array = host::stringArray({"a"});
  insertString(array.handle(), 2, nullptr);
  EXPECT_EQ(entry<String(Object, int32_t)>("RuntimeDirectReadStringArray")(array.handle(), -1), nullptr);
  EXPECT_EQ(upperBound(array.handle()), 0);
  const auto raised = host::takeExceptions();
  ASSERT_EQ(raised.size(), 2u);
  EXPECT_EQ(raised[0].className, "OutOfBoundsException");
}

TEST_F(Arrays, HostCodeMakesAndReadsThemWithNilElements) {
  EXPECT_EQ(host::texts(host::stringArray({"a", "", "c"})), (Texts{"a", "", "c"}));
  const auto array = host::objectArray({nullptr, 5, host::newInstance("Date")});
  const auto elements = host::elements(array);
  EXPECT_TRUE(elements[0].isNil());
  EXPECT_EQ(elements[1].integer(), 5);
  EXPECT_TRUE(host::isA(elements[2], "Date"));
  EXPECT_TRUE(host::elements(host::stringArrayOf({nullptr}))[0].isNil());
}

}  // namespace
}  // namespace fake
