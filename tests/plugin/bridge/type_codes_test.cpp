// What each code of a variant's type becomes, code by code.
#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "tests/plugin/bridge/fixture.h"

namespace {

struct TypeCode {
  int32_t code;
  const char* name;
  host::Value (*make)();
  const char* becomes;
};
void PrintTo(const TypeCode& row, std::ostream* out) {
  *out << row.code << ", " << row.name;
}

// clang-format off
// A small whole number is one CFNumber whatever its kind, so the 64-bit ones are larger.
const TypeCode kTypeCodes[] = {
    {   0, "nil",             [] { return host::variantOfType(0, "text"); },              "null"},
    {   2, "Int32",           [] { return host::Value(-7); },                             "Int32 -7"},
    {   3, "Int64",           [] { return host::Value(int64_t{1} << 40); },               "Int64 1099511627776"},
    {   4, "Single",          [] { return host::Value(0.1f); },                           "Float32 0.10000000149011612"},
    {   5, "Double",          [] { return host::Value(0.1); },                            "Float64 0.10000000000000001"},
    {   6, "Currency",        [] { return host::variantOfType(6, "2.5"); },               "Float64 2.5"},
    {   7, "Date",            [] { return host::date(2001, 1, 2); },                      "date 86400"},
    {   9, "Object",          [] { return host::memoryBlock("bytes"); },                  "data of 5 bytes"},
    {  11, "Boolean",         [] { return host::Value(true); },                           "true"},
    {  16, "Color",           [] { return host::Value::color(0x33FF0080); },              "colour ff0080ff"},
    {4098, "array of Int32",  [] { return host::int32Array({700, -800}); },               "[Int32 700, Int32 -800]"},
    {4099, "array of Int64",  [] { return host::int64Array({700, -800}); },               "[Int64 700, Int64 -800]"},
    {4100, "array of Single", [] { return host::singleArray({0.5f, 2}); },                "[Float32 0.5, Float32 2]"},
    {4101, "array of Double", [] { return host::doubleArray({0.5, 2}); },                 "[Float64 0.5, Float64 2]"},
    {4103, "array of Date",   [] { return host::dateArray({host::date(2001, 1, 1)}); },   "[date 0]"},
    {4104, "array of String", [] { return host::stringArray({"one", "two"}); },           "[text one, text two]"},
    {4105, "array of Object", [] { return host::objectArray({host::Value(7), "one"}); },  "[Int32 7, text one]"},
    {4107, "array of Boolean", [] { return host::booleanArray({true, false}); },           "[true, false]"},
};
// clang-format on

std::string describe(const void* value);

std::string describeArray(CFArrayRef array) {
  std::string text;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    text += (i > 0 ? ", " : "") + describe(CFArrayGetValueAtIndex(array, i));
  }
  return "[" + text + "]";
}

std::string describeNumber(CFNumberRef number) {
  std::ostringstream text;
  text.precision(17);
  const CFNumberType type = CFNumberGetType(number);
  int64_t whole = 0;
  double real = 0;
  if (CFNumberIsFloatType(number)) {
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberFloat64Type, &real));
    text << (type == kCFNumberFloat32Type ? "Float32 " : "Float64 ") << real;
  } else {
    EXPECT_TRUE(CFNumberGetValue(number, kCFNumberSInt64Type, &whole));
    text << (type == kCFNumberSInt32Type ? "Int32 " : "Int64 ") << whole;
  }
  return text.str();
}

std::string describeColor(const void* value) {
  const auto color = static_cast<CGColorRef>(const_cast<void*>(value));
  std::string text = "colour ";
  for (size_t i = 0; i < CGColorGetNumberOfComponents(color); ++i) {
    char digits[9];
    snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(CGColorGetComponents(color)[i] * 255));
    text += digits;
  }
  return text;
}

std::string describe(const void* value) {
  if (!value) return "null";
  const CFTypeID type = CFGetTypeID(value);
  if (type == CFBooleanGetTypeID()) return value == kCFBooleanTrue ? "true" : "false";
  if (type == CFNumberGetTypeID()) return describeNumber(static_cast<CFNumberRef>(value));
  if (type == CFStringGetTypeID()) return "text " + textOf(value);
  if (type == CFArrayGetTypeID()) return describeArray(static_cast<CFArrayRef>(value));
  if (type == CGColorGetTypeID()) return describeColor(value);
  std::ostringstream text;
  if (type == CFDateGetTypeID()) text << "date " << CFDateGetAbsoluteTime(static_cast<CFDateRef>(value));
  if (type == CFDataGetTypeID())
    text << "data of " << CFDataGetLength(static_cast<CFDataRef>(value)) << " bytes";
  return text.str();
}

// What the host itself says of the value.
int32_t typeCodeOf(const host::Value& value) {
  typedef void* Load(void* null, const char* declaration);
  typedef int32_t VarType(void* variant);
  const auto load = reinterpret_cast<Load*>(host::resolve("REALLoadGlobalMethod"));
  const auto varType = reinterpret_cast<VarType*>(load(nullptr, "VarType(value As Variant) As Int32"));
  return varType(Variant(value).handle());
}

class TypeCodes : public BridgeTest, public testing::WithParamInterface<TypeCode> {};

TEST_P(TypeCodes, BecomeWhatTheirKindIs) {
  start();
  const host::Value value = GetParam().make();
  ASSERT_EQ(GetParam().code, typeCodeOf(value));
  EXPECT_EQ(GetParam().becomes, describe(toCF(value).get()));
}

INSTANTIATE_TEST_SUITE_P(Codes, TypeCodes, testing::ValuesIn(kTypeCodes), [](const auto& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

// Hosts on both sides of 2013.9, whose arrays are read in different ways; and one that has nothing to read
// variants with but their properties.

struct HostCase {
  const char* name;
  double version;
  bool storage;
  bool accessors;
};
void PrintTo(const HostCase& row, std::ostream* out) {
  *out << row.name;
}

class AllTypeCodes : public BridgeTest, public testing::WithParamInterface<HostCase> {
 protected:
  void SetUp() override {
    host::Settings settings;
    settings.version = GetParam().version;
    settings.directArrayStorage = GetParam().storage;
    if (!GetParam().accessors) {
      settings.unloadableMethods = {"VarType(value As Variant) As Int32"};
      settings.hidden = {"VariantToString", "VariantToInt32", "VariantToInt64", "VariantToSingle",
                         "VariantToDouble"};
    }
    start(settings);
  }
};

TEST_P(AllTypeCodes, AreHandledOrBecomeTheVariantsText) {
  const TypeCode* row = std::begin(kTypeCodes);
  for (int32_t code = 0; code <= 4200; ++code) {
    const bool listed = row != std::end(kTypeCodes) && row->code == code;
    const host::Value value = listed ? row->make() : host::variantOfType(code, "the text");
    EXPECT_EQ(listed ? row->becomes : "text the text", describe(toCF(value).get())) << code;
    if (listed) ++row;
  }
  EXPECT_EQ(std::end(kTypeCodes), row);
}

TEST_P(AllTypeCodes, BeyondThemBecomeTheVariantsText) {
  for (const int32_t code : {-1, INT32_MIN, 65536, INT32_MAX}) {
    EXPECT_EQ("text the text", describe(toCF(host::variantOfType(code, "the text")).get())) << code;
  }
}

TEST_P(AllTypeCodes, OfBooleansLookAtTheLowByteAlone) {
  for (const auto& [number, becomes] :
       {std::pair("0", "false"), std::pair("1", "true"), std::pair("255", "true"), std::pair("256", "false"),
        std::pair("257", "true"), std::pair("-1", "true")}) {
    EXPECT_EQ(becomes, describe(toCF(host::variantOfType(11, number)).get())) << number;
  }
}

TEST_P(AllTypeCodes, OfTextBecomeTheEmptyTextForANullString) {
  EXPECT_EQ("text ", describe(toCF(host::Value::nullString()).get()));
  EXPECT_EQ("text ", describe(toCF("").get()));
}

// A variant that says it is one, but has no fields to read.
TEST_P(AllTypeCodes, OfADateWithoutFieldsBecomeNull) {
  EXPECT_EQ("null", describe(toCF(host::variantOfType(7, "the text")).get()));
}

INSTANTIATE_TEST_SUITE_P(Hosts, AllTypeCodes,
                         testing::Values(HostCase{"host 2012.0", 2012.0, true, true},
                                         HostCase{"host 2013.9", 2013.9, true, true},
                                         HostCase{"host 2013.9 without storage", 2013.9, false, true},
                                         HostCase{"host 2013.91", 2013.91, false, true},
                                         HostCase{"host 2014.1", 2014.1, false, true},
                                         HostCase{"host 2014.1 without accessors", 2014.1, false, false}));

}  // namespace
