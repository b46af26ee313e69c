#include <cmath>
#include <ctime>
#include <limits>

#include "tests/standin/corefoundation/support.h"

namespace {

class Dates : public LedgerTest {};

TEST_F(Dates, AreComparedByTheirTime) {
  const Owned<CFDateRef> early(CFDateCreate(nullptr, -1.5));
  const Owned<CFDateRef> late(CFDateCreate(nullptr, 2));
  const Owned<CFDateRef> same(CFDateCreate(nullptr, 2));
  EXPECT_EQ(CFDateGetAbsoluteTime(early.get()), -1.5);
  EXPECT_EQ(CFDateCompare(early.get(), late.get(), nullptr), kCFCompareLessThan);
  EXPECT_EQ(CFDateCompare(late.get(), early.get(), nullptr), kCFCompareGreaterThan);
  EXPECT_EQ(CFDateCompare(late.get(), same.get(), nullptr), kCFCompareEqualTo);
  EXPECT_TRUE(CFEqual(late.get(), same.get()));
  EXPECT_EQ(CFHash(late.get()), CFHash(same.get()));
}

TEST_F(Dates, TheCurrentTimeIsThatOfTheSystem) {
  constexpr double kUnixEpoch = -978307200;
  const double before = static_cast<double>(std::time(nullptr)) + kUnixEpoch;
  const double now = CFAbsoluteTimeGetCurrent();
  EXPECT_GE(now, before);
  EXPECT_LE(now, before + 5);
}

TEST_F(Dates, EveryDayOfEightCenturiesComesBackFromItsGregorianDate) {
  for (int day = -146097; day < 146097; ++day) {
    const double at = day * 86400.0 + 3661;
    const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(at, nullptr);
    ASSERT_EQ(date.hour, 1);
    ASSERT_EQ(date.minute, 1);
    ASSERT_EQ(date.second, 1.0);
    ASSERT_EQ(CFGregorianDateGetAbsoluteTime(date, nullptr), at);
  }
}

TEST_F(Dates, TimesBeyondAllYearsGiveTheDateOfTheSmallestInteger) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double at : {kInfinity, -kInfinity, std::nan(""), 1e300, -1e300, 1e24, 7.8e20}) {
    const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(at, nullptr);
    EXPECT_EQ(date.year, 2030437302) << at;
    EXPECT_EQ(date.month, 6) << at;
    EXPECT_EQ(date.day, 7) << at;
  }
}

TEST_F(Dates, YearsEndWithTheLastAndGoRoundBackwards) {
  EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(1e18, nullptr).year, std::numeric_limits<SInt32>::max());
  EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(-6.8e16, nullptr).year, 2140135078);
}

TEST_F(Dates, OneThatIsNotANumberIsNeitherBeforeNorAfterAnother) {
  const Owned<CFDateRef> nan(CFDateCreate(nullptr, std::nan("")));
  const Owned<CFDateRef> same(CFDateCreate(nullptr, std::nan("")));
  const Owned<CFDateRef> today(CFDateCreate(nullptr, 0));
  EXPECT_EQ(CFDateCompare(nan.get(), same.get(), nullptr), kCFCompareEqualTo);
  EXPECT_EQ(CFDateCompare(nan.get(), today.get(), nullptr), kCFCompareEqualTo);
  EXPECT_EQ(CFDateCompare(today.get(), nan.get(), nullptr), kCFCompareEqualTo);
}

}  // namespace
