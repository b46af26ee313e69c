#include "tests/standin/host/fake_plugin.h"

namespace fake {
namespace {

class Variants : public HostTest {
 protected:
  static int32_t varType(Object variant) {
    void* const function = entry<void*(Object, const char*)>("REALLoadGlobalMethod")(
        nullptr, "VarType(value As Variant) As Int32");
    return function ? reinterpret_cast<int32_t (*)(Object)>(function)(variant) : -1;
  }
  static int32_t typeProperty(Object variant) {
    int32_t type = -1;
    entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(variant, "Type", &type);
    return type;
  }
};

TEST_F(Variants, TellTheirType) {
  const auto date = host::newInstance("Date"), object = host::newInstance("Dictionary");
  const String string = build("x");
  const std::pair<Object, int32_t> made[] = {{entry<Object(int32_t)>("Int32ToVariant")(1), 2},
                                             {entry<Object(int64_t)>("Int64ToVariant")(1), 3},
                                             {entry<Object(double)>("DoubleToVariant")(1), 5},
                                             {entry<Object(String)>("StringToVariant")(string), 8},
                                             {entry<Object(bool)>("BooleanToVariant")(true), 11}};
  for (const auto& [variant, type] : made) {
    EXPECT_EQ(varType(variant), type);
    EXPECT_EQ(typeProperty(variant), type);
    unlockObject(variant);
  }
  unlockString(string);
  EXPECT_EQ(varType(nullptr), 0);
  EXPECT_EQ(varType(date.handle()), 7);
  EXPECT_EQ(varType(object.handle()), 9);
  EXPECT_EQ(varType(host::stringArray({}).handle()), 4104);
  EXPECT_EQ(varType(host::objectArray({}).handle()), 4105);
  EXPECT_EQ(varType(host::int32Array({}).handle()), 4098);
  EXPECT_EQ(varType(host::booleanArray({}).handle()), 4107);
}

TEST_F(Variants, GiveTheirValueInEveryForm) {
  const Object variant = entry<Object(double)>("DoubleToVariant")(2.75);
  EXPECT_EQ(entry<int32_t(Object)>("VariantToInt32")(variant), 2);
  EXPECT_EQ(entry<int64_t(Object)>("VariantToInt64")(variant), 2);
  EXPECT_EQ(entry<float(Object)>("VariantToSingle")(variant), 2.75f);
  EXPECT_EQ(entry<double(Object)>("VariantToDouble")(variant), 2.75);
  const String text = entry<String(Object)>("VariantToString")(variant);
  EXPECT_EQ(content(text), "2.75");
  unlockString(text);
  unlockObject(variant);
}

TEST_F(Variants, GiveTheirValueAsPropertiesToo) {
  const Object variant = entry<Object(int64_t)>("Int64ToVariant")(int64_t{1} << 40);
  int64_t wide = 0;
  float single = 0;
  double number = 0;
  String text = nullptr;
  EXPECT_TRUE(
      entry<bool(Object, const char*, int64_t*)>("REALGetPropValueInt64")(variant, "LongValue", &wide));
  EXPECT_TRUE(
      entry<bool(Object, const char*, float*)>("REALGetPropValueSingle")(variant, "SingleValue", &single));
  EXPECT_TRUE(
      entry<bool(Object, const char*, double*)>("REALGetPropValueDouble")(variant, "DoubleValue", &number));
  EXPECT_TRUE(
      entry<bool(Object, const char*, String*)>("REALGetPropValueString")(variant, "StringValue", &text));
  EXPECT_EQ(wide, int64_t{1} << 40);
  EXPECT_EQ(single, 1099511627776.0f);
  EXPECT_EQ(number, 1099511627776.0);
  EXPECT_EQ(content(text), "1099511627776");
  int32_t narrow = 0;
  EXPECT_FALSE(entry<bool(Object, const char*, int32_t*)>("REALGetPropValueInt")(variant, "Other", &narrow));
  unlockString(text);
  unlockObject(variant);
}

TEST_F(Variants, MaySayThatTheyAreOfAnyType) {
  const auto intOf = entry<int32_t(Object)>("VariantToInt32");
  const auto numberOf = entry<double(Object)>("VariantToDouble");
  const auto textOf = entry<String(Object)>("VariantToString");
  for (const int32_t code : {0, 1, 6, 10, 17, 4096, 4102, 4200}) {
    const auto variant = host::variantOfType(code, "12.5");
    EXPECT_EQ(varType(variant.handle()), code);
    EXPECT_EQ(typeProperty(variant.handle()), code);
    const String text = textOf(variant.handle());
    EXPECT_EQ(content(text), "12.5");
    unlockString(text);
    EXPECT_EQ(intOf(variant.handle()), 12);
    EXPECT_EQ(numberOf(variant.handle()), 12.5);
  }
}

TEST_F(Variants, OfAnyTypeAreVariantsWhereverTheyAreStored) {
  const auto variant = host::variantOfType(6, "1");
  EXPECT_EQ(host::elements(host::objectArray({variant}))[0].handle(), variant.handle());
  EXPECT_EQ(host::lookUp(host::dictionary({{"a", variant}}), "a")->handle(), variant.handle());
  EXPECT_FALSE(host::isA(variant, "Date"));
  EXPECT_THROW(host::get(variant, "Year"), host::CallError);
  EXPECT_THROW(host::call(variant, "Anything"), host::CallError);
}

TEST_F(Variants, HoldColours) {
  const auto array = host::objectArray({host::Value::color(0xC0FF8000)});
  void* const read = entry<void*(Object)>("RuntimeArrayDirectGetGetProc")(array.handle());
  Object color = nullptr;
  ASSERT_TRUE(reinterpret_cast<bool (*)(Object, int32_t, Object*)>(read)(array.handle(), 0, &color));
  EXPECT_EQ(varType(color), 16);
  EXPECT_EQ(static_cast<uint32_t>(entry<int32_t(Object)>("VariantToInt32")(color)), 0xC0FF8000u);
  unlockObject(color);
}

TEST_F(Variants, KeepTheStringAlive) {
  const String string = build("kept");
  const Object variant = entry<Object(String)>("StringToVariant")(string);
  unlockString(string);
  const String again = entry<String(Object)>("VariantToString")(variant);
  EXPECT_EQ(again, string);
  unlockString(again);
  unlockObject(variant);
  EXPECT_EQ(standin::ledgerLine("host string"), 0);
}

TEST_F(Variants, ThePropertiesOfTheHostsOwnClassesAreReadAndSetByType) {
  const auto date = host::newInstance("Date");
  EXPECT_TRUE(entry<bool(Object, const char*, int32_t)>("REALSetPropValueInt")(date.handle(), "Year", 2001));
  EXPECT_EQ(host::get(date, "year").integer(), 2001);
  EXPECT_FALSE(entry<bool(Object, const char*, int32_t)>("REALSetPropValueInt")(date.handle(), "Era", 1));
  EXPECT_FALSE(
      entry<bool(Object, const char*, String)>("REALSetPropValueString")(date.handle(), "Year", nullptr));
}

TEST_F(Variants, APlannedFailureGivesTheNeutralValue) {
  standin::failCall("Int32ToVariant", 1);
  EXPECT_EQ(entry<Object(int32_t)>("Int32ToVariant")(1), nullptr);
  standin::failCall("RuntimeArrayCreateSingleDimBoundedArray", 1);
  EXPECT_EQ(createArray(3, -1), nullptr);
  const auto date = host::newInstance("Date");
  standin::failCall("REALSetPropValueInt", 1);
  EXPECT_FALSE(entry<bool(Object, const char*, int32_t)>("REALSetPropValueInt")(date.handle(), "Year", 2001));
  EXPECT_EQ(host::get(date, "Year").integer(), 1987);
  standin::clearFailures();
}

TEST_F(Variants, AReleaseReleasesEvenWhenItIsMadeToFail) {
  const Object variant = entry<Object(int32_t)>("Int32ToVariant")(1);
  standin::failCall("REALUnlockObject", 1);
  unlockObject(variant);
  EXPECT_EQ(standin::failuresFired(), 1);
  EXPECT_EQ(standin::ledgerLine("host object"), 0);
  standin::clearFailures();
}

}  // namespace
}  // namespace fake
