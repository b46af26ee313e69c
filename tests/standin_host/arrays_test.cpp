#include "tests/standin_host/fake_plugin.h"

namespace fake {
namespace {

using testing::ElementsAre;

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
  EXPECT_DEATH(EXPECT_EQ(*static_cast<Object volatile*>(storage(array.handle())), nullptr), "");
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
  EXPECT_THAT(host::texts(host::stringArray({"a", "", "c"})), ElementsAre("a", "", "c"));
  const auto array = host::objectArray({nullptr, 5, host::newInstance("Date")});
  const auto elements = host::elements(array);
  EXPECT_TRUE(elements[0].isNil());
  EXPECT_EQ(elements[1].integer(), 5);
  EXPECT_TRUE(host::isA(elements[2], "Date"));
  EXPECT_TRUE(host::elements(host::stringArrayOf({nullptr}))[0].isNil());
}

}  // namespace
}  // namespace fake
