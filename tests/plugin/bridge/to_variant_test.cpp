// From Core Foundation values to host variants.
#include "tests/plugin/array_access.h"
#include "tests/plugin/bridge/fixture.h"

namespace {

class ToVariant : public BridgeTest {};

TEST_F(ToVariant, NullAndTheNullObjectAreNil) {
  start();
  EXPECT_TRUE(toVariant(nullptr).isNil());
  EXPECT_TRUE(toVariant(kCFNull).isNil());
}

TEST_F(ToVariant, BooleansAreBooleans) {
  start();
  EXPECT_TRUE(toVariant(kCFBooleanTrue).boolean());
  EXPECT_FALSE(toVariant(kCFBooleanFalse).boolean());
  EXPECT_EQ(host::Kind::boolean, toVariant(kCFBooleanFalse).kind());
}

template <typename Value>
CFOwner numberOf(CFNumberType type, Value value) {
  return own(CFNumberCreate(nullptr, type, &value));
}

TEST_F(ToVariant, IntegersOfUpTo4BytesAreInt32AndOf8BytesInt64) {
  start();
  EXPECT_EQ(host::Kind::int32, toVariant(numberOf<int16_t>(kCFNumberSInt16Type, -300).get()).kind());
  EXPECT_EQ(-300, toVariant(numberOf<int16_t>(kCFNumberSInt16Type, -300).get()).integer());
  EXPECT_EQ(INT32_MIN, toVariant(cfInt32(INT32_MIN).get()).integer());
  EXPECT_EQ(host::Kind::int64, toVariant(cfInt64(1000).get()).kind());
  EXPECT_EQ(1000, toVariant(cfInt64(1000).get()).integer());
  EXPECT_EQ(INT64_MAX, toVariant(cfInt64(INT64_MAX).get()).integer());
}

TEST_F(ToVariant, FloatsAreDoubles) {
  start();
  const host::Value single = toVariant(numberOf<float>(kCFNumberFloat32Type, 0.5f).get());
  EXPECT_EQ(host::Kind::number, single.kind());
  EXPECT_EQ(0.5, single.number());
  EXPECT_EQ(1.0 / 3, toVariant(cfReal(1.0 / 3).get()).number());
}

TEST_F(ToVariant, ANumberThatCantBeReadInOneWayIsReadInTheNext) {
  start();
  const auto half = cfReal(2.0), two = cfInt32(2);
  standin::failCall("CFNumberGetValue", 1);
  EXPECT_EQ(host::Kind::int64, toVariant(half.get()).kind());
  standin::failCall("CFNumberGetValue", 1);
  const host::Value wide = toVariant(two.get());
  EXPECT_EQ(host::Kind::int64, wide.kind());
  EXPECT_EQ(2, wide.integer());
}

TEST_F(ToVariant, AWideNumberThatCantBeReadIsNil) {
  start();
  const auto wide = cfInt64(int64_t{1} << 40);  // no 4 bytes hold it
  standin::failCall("CFNumberGetValue", 1);
  EXPECT_TRUE(toVariant(wide.get()).isNil());
}

TEST_F(ToVariant, TextsAreStrings) {
  start();
  EXPECT_EQ("caf\xC3\xA9", toVariant(cfText("caf\xC3\xA9").get()).text());
}

TEST_F(ToVariant, DataIsAStringOfItsBytes) {
  start();
  const UInt8 plain[] = {'a', 'b', 0, 'c'};
  const host::Value ascii = toVariant(own(CFDataCreate(nullptr, plain, 4)).get());
  EXPECT_EQ(std::string("ab\0c", 4), ascii.bytes());
  EXPECT_EQ(host::kEncodingAscii, ascii.encoding());
  const UInt8 high[] = {0xFF, 0x00, 0x80};
  const host::Value raw = toVariant(own(CFDataCreate(nullptr, high, 3)).get());
  EXPECT_EQ(std::string("\xFF\0\x80", 3), raw.bytes());
  EXPECT_EQ(host::kEncodingUnknown, raw.encoding());
}

TEST_F(ToVariant, DatesAreInGMTWithoutFractions) {
  start();
  EXPECT_EQ((host::DateFields{2001, 1, 1, 0, 0, 0}),
            host::fields(toVariant(own(CFDateCreate(nullptr, 0.5)).get())));
  EXPECT_EQ((host::DateFields{2000, 12, 31, 23, 59, 59}),
            host::fields(toVariant(own(CFDateCreate(nullptr, -0.5)).get())));
  EXPECT_EQ((host::DateFields{2011, 3, 5, 12, 0, 1}),
            host::fields(toVariant(own(CFDateCreate(nullptr, 321019201.999)).get())));
}

TEST_F(ToVariant, WithoutADateClassADateIsNil) {
  host::Settings settings;
  settings.unknownClasses = {"Date"};
  start(settings);
  EXPECT_TRUE(toVariant(own(CFDateCreate(nullptr, 0)).get()).isNil());
}

// Arrays, on both sides of 2013.9.

class ArrayToVariant : public WithArrayAccess<BridgeTest> {};

TEST_P(ArrayToVariant, HasEveryElementInItsPlace) {
  const auto five = cfInt32(5), name = cfText("name");
  const auto inner = cfArray({kCFBooleanTrue});
  const auto values =
      host::elements(toVariant(cfArray({five.get(), kCFNull, name.get(), inner.get(), five.get()}).get()));
  ASSERT_EQ(5u, values.size());
  EXPECT_EQ(5, values[0].integer());
  EXPECT_TRUE(values[1].isNil());
  EXPECT_EQ("name", values[2].text());
  EXPECT_EQ(1u, host::elements(values[3]).size());
  EXPECT_EQ(5, values[4].integer());
}

TEST_P(ArrayToVariant, OfNothingIsEmptyNotNil) {
  const host::Value array = toVariant(cfArray({}).get());
  EXPECT_FALSE(array.isNil());
  EXPECT_EQ(0u, host::elements(array).size());
}

TEST_P(ArrayToVariant, AsksForTheWriteProcedureOnlyWhereItMust) {
  standin::countCalls();
  toVariant(cfArray({kCFBooleanTrue, kCFBooleanFalse}).get());
  const bool direct = GetParam().storage && GetParam().version <= 2013.9;
  EXPECT_EQ(direct ? 0 : 2, standin::callCount("RuntimeArrayDirectGetSetProc"));
}

INSTANTIATE_TEST_SUITE_P(Hosts, ArrayToVariant, testing::ValuesIn(kArrayAccesses));

TEST_F(ToVariant, AnArrayThatCantBeMadeIsNil) {
  start();
  standin::failCall("RuntimeArrayCreateSingleDimBoundedArray", 1);
  EXPECT_TRUE(toVariant(cfArray({kCFBooleanTrue}).get()).isNil());
}

TEST_F(ToVariant, WithoutASetProcedureElementsStayNil) {
  host::Settings settings;
  settings.setProcedures = false;
  start(settings);
  const auto values = host::elements(toVariant(cfArray({kCFBooleanTrue, kCFBooleanFalse}).get()));
  ASSERT_EQ(2u, values.size());
  EXPECT_TRUE(values[0].isNil());
  EXPECT_TRUE(values[1].isNil());
}

}  // namespace
