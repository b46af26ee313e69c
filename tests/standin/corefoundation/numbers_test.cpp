#include <cmath>

#include "tests/standin/corefoundation/support.h"

namespace {

class Numbers : public LedgerTest {};

TEST_F(Numbers, AConversionThatLosesDigitsWritesItsResultAndReportsIt) {
  const Ref<CFNumberRef> number(makeDouble(2.75));
  int value = 0;
  EXPECT_FALSE(CFNumberGetValue(number, kCFNumberIntType, &value));
  EXPECT_EQ(value, 2);
}

TEST_F(Numbers, AreOrderedAcrossTypesWithoutRounding) {
  const SInt64 big = 9007199254740993;  // between two doubles
  const Ref<CFNumberRef> integer(CFNumberCreate(nullptr, kCFNumberSInt64Type, &big));
  const Ref<CFNumberRef> below(makeDouble(9007199254740992.0));
  const Ref<CFNumberRef> above(makeDouble(9007199254740994.0));
  const Ref<CFNumberRef> half(makeDouble(-0.5));
  const Ref<CFNumberRef> zero(makeInt(0));
  EXPECT_EQ(CFNumberCompare(integer, below, nullptr), kCFCompareGreaterThan);
  EXPECT_EQ(CFNumberCompare(below, integer, nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(integer, above, nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(half, zero, nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFNumberCompare(zero, half, nullptr), kCFCompareGreaterThan);
}

TEST_F(Numbers, NotANumberEqualsItself) {
  const Ref<CFNumberRef> a(makeDouble(std::nan("")));
  const Ref<CFNumberRef> b(makeDouble(-std::nan("7")));
  EXPECT_TRUE(CFEqual(a, b));
  EXPECT_EQ(CFHash(a), CFHash(b));
}

TEST_F(Numbers, TheBooleansAreTwoObjectsAndNoNumbers) {
  EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
  EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
  const Ref<CFNumberRef> one(makeInt(1));
  EXPECT_FALSE(CFEqual(one.get(), kCFBooleanTrue));
}

}  // namespace
