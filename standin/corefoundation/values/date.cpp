// Dates, and the Gregorian calendar carried on into all times.
#include <CoreFoundation/CFDate.h>

#include <cmath>
#include <ctime>
#include <limits>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"
#include "standin/corefoundation/values/time_zone.h"

struct __CFDate : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kDateType;
  CFAbsoluteTime at;
};

namespace cf {
namespace {

constexpr double kSecondsPerDay = 86400;
constexpr double kUnixEpoch = -978307200;  // 1970 as an absolute time
constexpr int64_t kFirstYear = 2001;       // of absolute time
constexpr int64_t kDaysPer400Years = 146097;

Boolean equalDates(CFTypeRef a, CFTypeRef b) {
  return static_cast<CFDateRef>(a)->at == static_cast<CFDateRef>(b)->at;
}

CFHashCode hashDate(CFTypeRef cf) {
  return hashDouble(static_cast<CFDateRef>(cf)->at);
}

bool isLeap(int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// A month outside 1 to 12 doesn't carry into the year: 13 lies behind December, every other counts from the
// start of the year, and all above 2 have the leap day before them.
int64_t daysBeforeMonth(int month, int64_t year) {
  constexpr int64_t kDays[] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
  const int64_t before = month >= 0 && month <= 13 ? kDays[month] : 0;
  return before + (month > 2 && isLeap(year) ? 1 : 0);
}

int64_t floorDivide(int64_t a, int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// Days from the first of January 2001.
int64_t daysBeforeYear(int64_t year) {
  const int64_t y = year - 1;
  return 365 * (year - kFirstYear) + floorDivide(y, 4) - floorDivide(y, 100) + floorDivide(y, 400) - 485;
}

struct Day {
  int64_t year;
  int month;
  int day;
};

// Counted within one round of 400 years, so that no day is too far.
Day dayFrom(int64_t days) {
  const int64_t rounds = floorDivide(days, kDaysPer400Years);
  const int64_t within = days % kDaysPer400Years;
  const int64_t day = within < 0 ? within + kDaysPer400Years : within;
  int64_t year = kFirstYear + day / 366;  // never too far
  while (daysBeforeYear(year + 1) <= day) ++year;
  const int64_t rest = day - daysBeforeYear(year);
  int month = 12;
  while (daysBeforeMonth(month, year) > rest) --month;
  return {year + rounds * 400, month, static_cast<int>(rest - daysBeforeMonth(month, year)) + 1};
}

// Never negative; a tiny negative value gives the modulus itself, by rounding. By division and not by fmod,
// whose exact result differs from the original's where the product no longer is exact.
double modulo(double value, double modulus) {
  const double rest = value - std::floor(value / modulus) * modulus;
  if (rest == 0) return 0;  // the negative zero too
  return rest < 0 ? rest + modulus : rest;
}

// As the processor converts: what fits in no integer, "not a number" too, becomes the smallest one.
template <class Integer>
Integer converted(double value) {
  const double limit = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
  return value >= -limit && value < limit ? static_cast<Integer>(value) : std::numeric_limits<Integer>::min();
}

// Hours and minutes. Far from the epoch the rest is no longer exact: its low byte is what a date has room
// for, and of "not a number" that is the modulus.
SInt8 moduloByte(double value, int32_t modulus) {
  const double rest = std::floor(value - std::floor(value / modulus) * modulus);
  const int32_t whole = converted<int32_t>(static_cast<double>(static_cast<float>(rest)));
  return static_cast<SInt8>(whole < 0 ? whole + modulus : whole);
}

// What comes so late that a double no longer tells days apart, and "not a number", count as the smallest day.
int64_t dayOf(CFAbsoluteTime at) {
  constexpr double kTooLate = 0x1p53;
  const double days = std::floor(at / kSecondsPerDay);
  return days < kTooLate ? converted<int64_t>(days) : std::numeric_limits<int64_t>::min();
}

// Years end with the largest that a date has room for; backwards they go round.
CFGregorianDate gregorianFrom(CFAbsoluteTime at) {
  const Day day = dayFrom(dayOf(at));
  constexpr int64_t kLastYear = std::numeric_limits<int32_t>::max();
  CFGregorianDate date{};
  date.year = static_cast<SInt32>(day.year > kLastYear ? kLastYear : day.year);
  date.month = static_cast<SInt8>(day.month);
  date.day = static_cast<SInt8>(day.day);
  date.hour = moduloByte(std::floor(at / 3600), 24);
  date.minute = moduloByte(std::floor(at / 60), 60);
  date.second = modulo(at, 60);
  return date;
}

CFAbsoluteTime absoluteFrom(const CFGregorianDate& date) {
  const int64_t days = daysBeforeYear(date.year) + daysBeforeMonth(date.month, date.year) + date.day - 1;
  // Summed in this order: the digits that the time of day loses are the original's.
  const double timeOfDay = 3600.0 * date.hour + 60.0 * date.minute + date.second;
  return kSecondsPerDay * static_cast<double>(days) + timeOfDay;
}

}  // namespace

const CFRuntimeClass kDateClass = {.className = "CFDate", .equal = equalDates, .hash = hashDate};

}  // namespace cf

using standin::Gate;

CFTypeID CFDateGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kDateType;
}

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
  const Gate gate(__func__);
  if (gate.fails()) return 0;
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9 + cf::kUnixEpoch;
}

CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  __CFDate* const date = cf::makeObject<__CFDate>();
  if (date) date->at = at;
  return date;
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate) {
  const Gate gate(__func__);
  cf::checked(theDate, __func__);
  return gate.fails() ? 0 : theDate->at;
}

// A date that is "not a number" is neither before nor after any other.
CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void*) {
  const Gate gate(__func__);
  cf::checked(theDate, __func__);
  cf::checked(otherDate, __func__);
  if (gate.fails()) return kCFCompareEqualTo;
  if (theDate->at < otherDate->at) return kCFCompareLessThan;
  return theDate->at > otherDate->at ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate gdate, CFTimeZoneRef tz) {
  const Gate gate(__func__);
  const CFTimeInterval offset = tz ? cf::secondsFromGMT(tz, __func__) : 0;
  return gate.fails() ? 0 : cf::absoluteFrom(gdate) - offset;
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime at, CFTimeZoneRef tz) {
  const Gate gate(__func__);
  const CFTimeInterval offset = tz ? cf::secondsFromGMT(tz, __func__) : 0;
  return gate.fails() ? CFGregorianDate{} : cf::gregorianFrom(at + offset);
}
