// Dates: times as queries name them, dates alone, and the Gregorian calendar.
//
// The input: a byte that says which, then text, or numbers.
#include <CoreFoundation/CFDate.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>
#include <variant>

#include "fuzz/input.h"
#include "standin/coreservices/attributes/text.h"
#include "standin/coreservices/language/parse_error.h"
#include "standin/coreservices/language/time_values.h"

namespace {

using namespace standin::metadata;

// What dates of files and of queries lie within: 100,000 years.
constexpr double kFar = 3.2e12;

void requirePeriod(Period period) {
  fuzz::require(std::isfinite(period.start) && period.start <= period.end,
                "a time that ends before it starts");
  fuzz::require(period.contains(period.start), "a time that isn't within itself");
}

void readTimes(std::string_view bytes, double now) {
  const std::u16string text = utf16(readableText(bytes));
  try {
    size_t position = 0;
    const TimeValue time = readTime(text, position);
    fuzz::require(position <= text.size(), "a time that ends behind its text");
    const auto* const relative = std::get_if<RelativeTime>(&time);
    requirePeriod(relative ? resolve(*relative, {now}) : std::get<Period>(time));
  } catch (const ParseError& error) {
    fuzz::require(error.position <= text.size() && !error.reason.empty(),
                  "a mistake without a place or reason");
  }
}

void readDates(std::string_view bytes) {
  const std::u16string text = utf16(readableText(bytes));
  try {
    requirePeriod(readDate(text));
  } catch (const ParseError& error) {
    fuzz::require(error.position <= text.size() && !error.reason.empty(),
                  "a mistake without a place or reason");
  }
}

bool isIn(int value, int least, int most) {
  return value >= least && value <= most;
}

void convertThereAndBack(double at) {
  const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(at, nullptr);
  const double back = CFGregorianDateGetAbsoluteTime(date, nullptr);
  if (!(std::abs(at) < kFar)) return;
  fuzz::require(
      isIn(date.month, 1, 12) && isIn(date.day, 1, 31) && isIn(date.hour, 0, 23) && isIn(date.minute, 0, 59),
      "a date that no calendar has");
  fuzz::require(date.second >= 0 && date.second <= 60, "a second that no minute has");
  constexpr double kRounding = 0.01;  // near kFar
  fuzz::require(std::abs(back - at) < kRounding || date.second == 60, "a date that leads to another time");
}

void convertAnyDate(fuzz::Input& input) {
  CFGregorianDate date{};
  date.year = input.number<int32_t>();
  date.month = input.number<int8_t>();
  date.day = input.number<int8_t>();
  date.hour = input.number<int8_t>();
  date.minute = input.number<int8_t>();
  date.second = input.number<double>();
  convertThereAndBack(CFGregorianDateGetAbsoluteTime(date, nullptr));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  ::setenv("TZ", "Europe/London", 1);  // whose clocks change, and had other changes before 1970
  ::tzset();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  switch (input.byte() % 4) {
    case 0: {
      const auto now = input.number<int64_t>() % static_cast<int64_t>(kFar);
      readTimes(input.rest(), static_cast<double>(now) / 16);
      break;
    }
    case 1:
      readDates(input.rest());
      break;
    case 2:
      convertThereAndBack(input.number<double>());
      break;
    default:
      convertAnyDate(input);
  }
  return 0;
}
