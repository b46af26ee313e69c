#include <cmath>

#include "tests/standin/corefoundation/support.h"

namespace {

class Numbers : public LedgerTest {};

TEST_F(Numbers, AConversionThatLosesDigitsWritesItsResultAndReportsIt) {
  const auto number = makeDouble(2.75);
  int value = 0;
  EXPECT_FALSE(CFNumberGetValue(number.get(), kCFNumberIntType, &value));
  EXPECT_EQ(value, 2);
}

TEST_F(Numbers, AreOrderedAcrossTypesWithoutRounding) {
  const SInt64 big = 9007199254740993;  // between two doubles
  const Owned<CFNumberRef> integer(CFNumberCreate(nullptr, kCFNumberSInt64Type, &big));
  const auto below = makeDouble(9007199254740992.0);
  const auto above = makeDouble(9007199254740994.0);
  const auto half = makeDouble(-0.5);
  const auto zero = makeInt(0);
  EXPECT_EQ(CFNumberCompare(integer.get(), below.get(), nullptr), kCFCompareGreaterThan);
  EXPECT_EQ(CFNumberCompare(below.get(), integer.get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(integer.get(), above.get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(half.get(), zero.get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(zero.get(), half.get(), nullptr), kCFCompareGreaterThan);
}

TEST_F(Numbers, EveryIntegerIsAboveAFractionThatRoundsToTheNegativeZero) {
  const auto one = makeInt(-1);
  for (const double fraction : {-0.5, -0.25, -1e-300}) {
    const auto real = makeDouble(fraction);
    EXPECT_EQ(CFNumberCompare(one.get(), real.get(), nullptr), kCFCompareGreaterThan) << fraction;
    EXPECT_EQ(CFNumberCompare(real.get(), one.get(), nullptr), kCFCompareLessThan) << fraction;
  }
  const auto more = makeDouble(-0.75);
  EXPECT_EQ(CFNumberCompare(one.get(), more.get(), nullptr), kCFCompareLessThan);
}

TEST_F(Numbers, NotANumberEqualsItself) {
  const auto a = makeDouble(std::nan(""));
  const auto b = makeDouble(-std::nan("7"));
  EXPECT_TRUE(CFEqual(a.get(), b.get()));
  EXPECT_EQ(CFHash(a.get()), CFHash(b.get()));
}

TEST_F(Numbers, TheBooleansAreTwoObjectsAndNoNumbers) {
  EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
  EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
  const auto one = makeInt(1);
  EXPECT_FALSE(CFEqual(one.get(), kCFBooleanTrue));
}

}  // namespace
