// From host variants to Core Foundation values.
#include <ApplicationServices/ApplicationServices.h>

#include <cstring>

#include "standin/applicationservices/control.h"
#include "tests/plugin/array_access.h"
#include "tests/plugin/bridge/fixture.h"

namespace {

class ToCF : public BridgeTest {};

int64_t integerOf(const CFOwner& value) {
  int64_t integer = 0;
  EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberSInt64Type, &integer));
  return integer;
}

double doubleOf(const void* value) {
  double number = 0;
  EXPECT_TRUE(CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberFloat64Type, &number));
  return number;
}

CFNumberType typeOf(const void* value) {
  return CFNumberGetType(static_cast<CFNumberRef>(value));
}

TEST_F(ToCF, NilIsNull) {
  start();
  EXPECT_EQ(nullptr, toCF(host::Value()));
  EXPECT_EQ(nullptr, toCF(host::variantOfType(0, "text")));
}

TEST_F(ToCF, NumbersKeepTheirKind) {
  start();
  EXPECT_EQ(-7, integerOf(toCF(-7)));
  EXPECT_EQ(kCFNumberSInt32Type, typeOf(toCF(-70000).get()));
  EXPECT_EQ(INT64_MAX, integerOf(toCF(INT64_MAX)));
  EXPECT_EQ(kCFNumberSInt64Type, typeOf(toCF(INT64_MAX).get()));
  EXPECT_EQ(kCFNumberFloat32Type, typeOf(toCF(0.5f).get()));
  EXPECT_EQ(0.5, doubleOf(toCF(0.5f).get()));
  EXPECT_EQ(kCFNumberFloat64Type, typeOf(toCF(1.0 / 3).get()));
  EXPECT_EQ(1.0 / 3, doubleOf(toCF(1.0 / 3).get()));
}

TEST_F(ToCF, BooleansAreTheConstants) {
  start();
  EXPECT_EQ(kCFBooleanTrue, toCF(true).get());
  EXPECT_EQ(kCFBooleanFalse, toCF(false).get());
}

TEST_F(ToCF, ColoursAreOpaqueWhateverTheirTopByte) {
  start();
  for (const uint32_t packed : {0x00FF8000u, 0xABFF8000u}) {
    const CFOwner color = toCF(host::Value::color(packed));
    ASSERT_EQ(CGColorGetTypeID(), CFGetTypeID(color.get()));
    const auto reference = static_cast<CGColorRef>(const_cast<void*>(color.get()));
    ASSERT_EQ(4u, CGColorGetNumberOfComponents(reference));
    const CGFloat* const components = CGColorGetComponents(reference);
    EXPECT_EQ(1.0f, components[0]);
    EXPECT_EQ(static_cast<float>(128 / 255.0), components[1]);
    EXPECT_EQ(0.0f, components[2]);
    EXPECT_EQ(1.0f, components[3]);
  }
}

TEST_F(ToCF, StringsAreTextsAndNeverNull) {
  start();
  EXPECT_EQ("caf\xC3\xA9", textOf(toCF("caf\xC3\xA9").get()));
  EXPECT_EQ("", textOf(toCF("").get()));
}

TEST_F(ToCF, DatesAreTakenAsGMT) {
  start();
  const auto time = [this](const host::Value& date) {
    return CFDateGetAbsoluteTime(static_cast<CFDateRef>(toCF(date).get()));
  };
  EXPECT_EQ(0.0, time(host::date(2001, 1, 1)));
  EXPECT_EQ(321019201.0, time(host::date(2011, 3, 5, 12, 0, 1)));
  EXPECT_EQ(nullptr, toDate(host::Value()));
}

class UnreadableDate : public BridgeTest, public testing::WithParamInterface<const char*> {};

TEST_P(UnreadableDate, IsNull) {
  host::Settings settings;
  settings.unreadableProperties = {GetParam()};
  start(settings);
  EXPECT_EQ(nullptr, toDate(host::date(2001, 1, 1)));
}

INSTANTIATE_TEST_SUITE_P(Properties, UnreadableDate,
                         testing::Values("Year", "Month", "Day", "Hour", "Minute", "Second"));

TEST_F(ToCF, ADateOfAMonth13IsWhatThePlatformMakesOfIt) {
  start();
  CFGregorianDate gregorian = {2001, 13, 1, 0, 0, 0.0};
  const CFAbsoluteTime expected = CFGregorianDateGetAbsoluteTime(gregorian, nullptr);
  const CFOwner date = toDate(host::date(2001, 13, 1));
  EXPECT_EQ(expected, CFDateGetAbsoluteTime(static_cast<CFDateRef>(date.get())));
}

// Arrays, on both sides of 2013.9, with and without storage.

class ArrayToCF : public WithArrayAccess<BridgeTest> {
 protected:
  std::vector<const void*> valuesOf(const CFOwner& array) {
    std::vector<const void*> values;
    const auto reference = static_cast<CFArrayRef>(array.get());
    for (CFIndex i = 0; i < CFArrayGetCount(reference); ++i)
      values.push_back(CFArrayGetValueAtIndex(reference, i));
    return values;
  }
  std::vector<double> numbersOf(const CFOwner& array, CFNumberType type) {
    std::vector<double> numbers;
    for (const void* value : valuesOf(array)) {
      EXPECT_EQ(type, typeOf(value));
      numbers.push_back(doubleOf(value));
    }
    return numbers;
  }
};

TEST_P(ArrayToCF, OfNumbersCarriesThem) {
  EXPECT_EQ((std::vector<double>{100, -200, 300}),
            numbersOf(toCF(host::int32Array({100, -200, 300})), kCFNumberSInt32Type));
  EXPECT_EQ((std::vector<double>{1099511627776.0, -5}),
            numbersOf(toCF(host::int64Array({int64_t{1} << 40, -5})), kCFNumberSInt64Type));
  EXPECT_EQ((std::vector<double>{0.5, 2.25}),
            numbersOf(toCF(host::singleArray({0.5f, 2.25f})), kCFNumberFloat32Type));
  EXPECT_EQ((std::vector<double>{1.0 / 3, -1e300}),
            numbersOf(toCF(host::doubleArray({1.0 / 3, -1e300})), kCFNumberFloat64Type));
}

TEST_P(ArrayToCF, OfBooleansHasTheConstants) {
  EXPECT_EQ((std::vector<const void*>{kCFBooleanTrue, kCFBooleanFalse, kCFBooleanTrue}),
            valuesOf(toCF(host::booleanArray({true, false, true}))));
}

TEST_P(ArrayToCF, OfStringsHasTheEmptyTextForANullOne) {
  const CFOwner array = toCF(host::stringArrayOf({host::Value("a"), host::Value(), host::Value("c")}));
  std::vector<std::string> texts;
  for (const void* value : valuesOf(array)) texts.push_back(textOf(value));
  EXPECT_EQ((Texts{"a", "", "c"}), texts);
}

TEST_P(ArrayToCF, OfDatesLeavesOutNilOnes) {
  const CFOwner array =
      toCF(host::dateArray({host::date(2001, 1, 1), host::Value(), host::date(2001, 1, 2)}));
  std::vector<double> times;
  for (const void* value : valuesOf(array))
    times.push_back(CFDateGetAbsoluteTime(static_cast<CFDateRef>(value)));
  EXPECT_EQ((std::vector<double>{0, 86400}), times);
}

TEST_P(ArrayToCF, OfObjectsConvertsEachAndLeavesOutNilOnes) {
  const CFOwner array = toCF(host::objectArray(
      {host::Value(5), host::Value(), host::Value("text"), host::objectArray({host::Value(true)})}));
  const auto values = valuesOf(array);
  ASSERT_EQ(3u, values.size());
  EXPECT_EQ(5, doubleOf(values[0]));
  EXPECT_EQ("text", textOf(values[1]));
  EXPECT_EQ(1, CFArrayGetCount(static_cast<CFArrayRef>(values[2])));
}

TEST_P(ArrayToCF, OfNothingIsEmptyNotNull) {
  for (const host::Value& array : {host::int32Array({}), host::stringArray({}), host::objectArray({})}) {
    const CFOwner result = toCF(array);
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(0, CFArrayGetCount(static_cast<CFArrayRef>(result.get())));
  }
}

INSTANTIATE_TEST_SUITE_P(Hosts, ArrayToCF, testing::ValuesIn(kArrayAccesses));

TEST_F(ToCF, AnArrayThatCantBeMadeIsNull) {
  start();
  standin::failCall("CFArrayCreateMutable", 1);
  EXPECT_EQ(nullptr, toCF(host::int32Array({1})));
}

TEST_F(ToCF, WithoutTheUpperBoundOneElementIsRead) {
  host::Settings settings;
  settings.hidden = {"RuntimeUBound"};
  start(settings);
  EXPECT_EQ(1, CFArrayGetCount(static_cast<CFArrayRef>(toCF(host::int32Array({1, 2})).get())));
}

TEST_F(ToCF, WithoutGetProceduresElementsAreEmpty) {
  start();
  const auto convert = [this](const host::Value& array) {
    const Variant variant(array);  // while there still are procedures
    host::settings().getProcedures = false;
    CFOwner result = own(toCFAlone(variant));
    host::settings().getProcedures = true;
    return result;
  };
  const auto first = [](const CFOwner& array) {
    return CFArrayGetValueAtIndex(static_cast<CFArrayRef>(array.get()), 0);
  };
  EXPECT_EQ(0, doubleOf(first(convert(host::int32Array({7})))));
  EXPECT_EQ(kCFBooleanFalse, first(convert(host::booleanArray({true}))));
  EXPECT_EQ("", textOf(first(convert(host::stringArray({"text"})))));
  EXPECT_EQ(0, CFArrayGetCount(static_cast<CFArrayRef>(convert(host::objectArray({1, 2})).get())));
}

// Objects

std::string bytesOf(const CFOwner& data) {
  EXPECT_EQ(CFDataGetTypeID(), CFGetTypeID(data.get()));
  const auto reference = static_cast<CFDataRef>(data.get());
  return std::string(reinterpret_cast<const char*>(CFDataGetBytePtr(reference)),
                     static_cast<size_t>(CFDataGetLength(reference)));
}

TEST_F(ToCF, MemoryBlocksAreCopiedAsData) {
  start();
  EXPECT_EQ(std::string("a\0b", 3), bytesOf(toCF(host::memoryBlock(std::string_view("a\0b", 3)))));
  EXPECT_EQ("a", bytesOf(toCF(host::memoryBlock("a"))));
  EXPECT_EQ("", bytesOf(toCF(host::memoryBlock(""))));
}

TEST_F(ToCF, AMemoryBlockWithoutAPointerOrOfANegativeSizeIsEmptyData) {
  host::Settings settings;
  settings.nullMemoryBlockPointers = true;
  start(settings);
  EXPECT_EQ("", bytesOf(toCF(host::memoryBlock("abc"))));
  host::settings().nullMemoryBlockPointers = false;
  host::settings().memoryBlockSize = -1;
  EXPECT_EQ("", bytesOf(toCF(host::memoryBlock("abc"))));
}

TEST_F(ToCF, MemoryBlocksOfAHostThatDoesNotTellTheirSizeOrPointerAreEmptyData) {
  for (const char* service : {"memoryBlockGetSize", "memoryBlockGetPtr"}) {
    host::Settings settings;
    settings.hidden = {service};
    start(settings);
    EXPECT_EQ("", bytesOf(toCF(host::memoryBlock("abc")))) << service;
    TearDown();
  }
}

// A folder item is not known by its class.
TEST_F(ToCF, OfAHostWithoutClassReferencesOnlyFolderItemsAreKnown) {
  host::Settings settings;
  settings.hidden = {"pluginObjectType"};
  start(settings);
  EXPECT_EQ(nullptr, toCF(host::memoryBlock("abc")));
  EXPECT_EQ(nullptr, toCF(host::dictionary()));
  const CFOwner url = toCF(host::folderItem("/usr"));
  ASSERT_NE(nullptr, url);
  EXPECT_EQ(CFURLGetTypeID(), CFGetTypeID(url.get()));
}

std::string floats(std::vector<float> values) {
  return std::string(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(float));
}

TEST_F(ToCF, GeometryIsDataOfFloats) {
  start();
  for (const char* name : {"CGRectZNK", "CGSizeZNK", "CGPointZNK"}) host::addGeometryClass(name);
  EXPECT_EQ(floats({1, 2, 3.5f, 4}), bytesOf(toCF(host::geometry("CGRectZNK", {1, 2, 3.5, 4}))));
  EXPECT_EQ(floats({2.5f, 4}), bytesOf(toCF(host::geometry("CGSizeZNK", {2.5, 4}))));
  EXPECT_EQ(floats({-1, 0.25f}), bytesOf(toCF(host::geometry("CGPointZNK", {-1, 0.25}))));
}

TEST_F(ToCF, AnObjectOfAnUnknownClassIsNull) {
  start();
  EXPECT_EQ(nullptr, toCF(host::newInstance("MDItemZNK")));
}

class WrapperToCF : public BridgeTest, public testing::WithParamInterface<const char*> {};

TEST_P(WrapperToCF, IsTheReferenceItHoldsRetained) {
  start();
  host::addWrapperClass(GetParam(), true);
  const std::string type(GetParam(), strlen(GetParam()) - 3);
  const auto types = standin::graphicsTypes();
  const bool graphics = std::find(types.begin(), types.end(), type) != types.end();
  const CFOwner reference = graphics ? own(standin::makeInstance(type)) : cfText("any value");
  const CFIndex count = CFGetRetainCount(reference.get());
  const host::Value wrapper = host::newInstance(GetParam());
  host::setWrapped(wrapper, CFRetain(reference.get()));
  {
    const CFOwner value = toCF(wrapper);
    EXPECT_EQ(reference.get(), value.get());
    EXPECT_EQ(count + 2, CFGetRetainCount(reference.get()));
  }
  EXPECT_EQ(count + 1, CFGetRetainCount(reference.get()));
}

TEST_P(WrapperToCF, WithoutAReferenceIsNull) {
  start();
  host::addWrapperClass(GetParam(), true);
  EXPECT_EQ(nullptr, toCF(host::newInstance(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Rows, WrapperToCF,
                         testing::Values("CGImageZNK", "CGColorSpaceZNK", "CGColorZNK", "CGDataProviderZNK",
                                         "CGDataConsumerZNK", "CGFontZNK", "CGContextZNK", "CGEventZNK",
                                         "CGEventSourceZNK", "CGLayerZNK", "CGPathZNK", "CGPSConverterZNK",
                                         "KeychainZNK", "KeychainItemZNK", "CFObjectZNK",
                                         "NSAttributedStringZNK", "NSTimerZNK", "NSCalendarZNK",
                                         "NSCharacterSetZNK", "NSErrorZNK", "NSLocaleZNK", "NSTimeZoneZNK"));

}  // namespace
