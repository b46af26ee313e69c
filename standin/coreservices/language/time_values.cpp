#include "standin/coreservices/language/time_values.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

#include "standin/coreservices/attributes/dates.h"

namespace standin::metadata {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kMostYears = 10000;

struct NamedTime {
  std::u16string_view name;
  TimeUnit unit;
  int64_t distance;
};
constexpr NamedTime kNamedTimes[] = {
    {u"now", TimeUnit::Second, 0},     {u"today", TimeUnit::Day, 0},        {u"yesterday", TimeUnit::Day, -1},
    {u"this_week", TimeUnit::Week, 0}, {u"this_month", TimeUnit::Month, 0}, {u"this_year", TimeUnit::Year, 0},
};

int64_t mostUnits(TimeUnit unit) {
  switch (unit) {
    case TimeUnit::Second:
      return kMostYears * 365 * kSecondsPerDay;
    case TimeUnit::Day:
      return kMostYears * 365;
    case TimeUnit::Week:
      return kMostYears * 52;
    case TimeUnit::Month:
      return kMostYears * 12;
    case TimeUnit::Year:
      return kMostYears;
  }
  return 0;
}

double startOf(std::chrono::sys_days day) {
  return static_cast<double>(timeOfClock(day.time_since_epoch().count() * kSecondsPerDay) - kFrom1970To2001);
}

std::chrono::sys_days localDay(Date now) {
  const auto seconds = static_cast<int64_t>(std::floor(now.seconds)) + kFrom1970To2001;
  const std::chrono::sys_seconds local{std::chrono::seconds(seconds + clockOffsetAt(seconds))};
  return std::chrono::floor<std::chrono::days>(local);
}

class TimeReader {
 public:
  TimeReader(std::u16string_view text, size_t position) : text_(text), position_(position) {}

  size_t position() const { return position_; }

  TimeValue read() {
    if (!take(kTimePrefix)) fail(position_, "expected $time after which a time is named");
    if (!take(u".")) fail(position_, "expected . and the name of a time after $time");
    const size_t nameAt = position_;
    while ((peek() >= u'a' && peek() <= u'z') || (peek() >= u'A' && peek() <= u'Z') || peek() == u'_' ||
           isDigit(peek())) {
      ++position_;
    }
    const std::u16string_view name = text_.substr(nameAt, position_ - nameAt);
    if (name == u"iso") return readIso();
    for (const NamedTime& known : kNamedTimes) {
      if (known.name == name) return readRelative(known);
    }
    fail(nameAt, "expected now, today, yesterday, this_week, this_month, this_year or iso after $time.");
  }

  Period readDateAlone() {
    const std::chrono::sys_days day = readDay();
    const Period period =
        take(u"T") ? readMoment(day) : Period{startOf(day), startOf(day + std::chrono::days(1))};
    if (position_ < text_.size()) fail(position_, "expected the date to end here");
    return period;
  }

 private:
  [[noreturn]] static void fail(size_t position, std::string reason) {
    throw ParseError{position, std::move(reason)};
  }
  static bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
  char16_t peek() const { return position_ < text_.size() ? text_[position_] : u'\0'; }
  bool take(std::u16string_view symbol) {
    if (!text_.substr(position_).starts_with(symbol)) return false;
    position_ += symbol.size();
    return true;
  }
  void skipBlanks() {
    while (peek() == u' ' || peek() == u'\t' || peek() == u'\n' || peek() == u'\r') ++position_;
  }
  void close(size_t opening) {
    skipBlanks();
    if (position_ >= text_.size()) fail(opening, "this parenthesis is never closed");
    if (!take(u")")) fail(position_, "expected )");
  }

  RelativeTime readRelative(const NamedTime& named) {
    const size_t nameEnd = position_;
    skipBlanks();
    const size_t opening = position_;
    if (!take(u"(")) {
      position_ = nameEnd;
      return {named.unit, named.distance};
    }
    skipBlanks();
    const size_t numberAt = position_;
    const std::optional<int64_t> number = readWholeNumber();
    const int64_t most = mostUnits(named.unit);
    if (!number || *number > most || *number < -most) fail(numberAt, "a time lies at most 10,000 years away");
    close(opening);
    return {named.unit, named.distance + *number};
  }

  // Nothing for a number that is too large.
  std::optional<int64_t> readWholeNumber() {
    std::string digits;
    if (peek() == u'-') digits += '-';
    if (peek() == u'-' || peek() == u'+') ++position_;
    if (!isDigit(peek())) fail(position_, "expected a whole number");
    while (isDigit(peek())) digits += static_cast<char>(text_[position_++]);
    int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return read.ec == std::errc{} ? std::optional(number) : std::nullopt;
  }

  // A number of exactly `digits` digits, from `least` to `most`.
  int readDigits(int digits, int least, int most, const char* reason) {
    const size_t start = position_;
    int number = 0;
    for (int i = 0; i < digits; ++i) {
      if (!isDigit(peek())) fail(position_, reason);
      number = number * 10 + (text_[position_++] - u'0');
    }
    if (number < least || number > most) fail(start, reason);
    return number;
  }

  Period readIso() {
    skipBlanks();
    const size_t opening = position_;
    if (!take(u"(")) fail(position_, "expected ( and a date such as 2011-03-05T12:00:00Z");
    skipBlanks();
    const std::chrono::sys_days day = readDay();
    if (!take(u"T")) {
      close(opening);
      return {startOf(day), startOf(day + std::chrono::days(1))};
    }
    const double instant = readMoment(day).start;
    close(opening);
    return {instant, instant};
  }

  std::chrono::sys_days readDay() {
    const int year = readDigits(4, 0, 9999, "expected a year of four digits");
    if (!take(u"-")) fail(position_, "expected - and a month");
    const int month = readDigits(2, 1, 12, "expected a month from 01 to 12");
    if (!take(u"-")) fail(position_, "expected - and a day");
    const size_t dayAt = position_;
    const int day = readDigits(2, 1, 31, "expected a day from 01 to 31");
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) fail(dayAt, "this month has no such day");
    return date;
  }

  Period readMoment(std::chrono::sys_days day) {
    const int hour = readDigits(2, 0, 23, "expected an hour from 00 to 23");
    if (!take(u":")) fail(position_, "expected : and minutes");
    const int minute = readDigits(2, 0, 59, "expected minutes from 00 to 59");
    const bool hasSecond = take(u":");
    const int second = hasSecond ? readDigits(2, 0, 60, "expected seconds from 00 to 60") : 0;
    const size_t fractionAt = position_;
    const double fraction = readFraction();
    const double length = position_ > fractionAt ? 0 : hasSecond ? 1 : 60;
    const int64_t local = day.time_since_epoch().count() * kSecondsPerDay + int64_t{hour} * 3600 +
                          int64_t{minute} * 60 + second;
    const std::optional<int64_t> offset = readOffset();
    const int64_t time = offset ? local - *offset : timeOfClock(local);
    const double start = static_cast<double>(time - kFrom1970To2001) + fraction;
    return {start, start + length};
  }

  double readFraction() {
    if (!take(u".") && !take(u",")) return 0;
    if (!isDigit(peek())) fail(position_, "expected digits of a second");
    std::string digits = "0.";
    while (isDigit(peek())) digits += static_cast<char>(text_[position_++]);
    double fraction = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), fraction);
    return fraction;
  }

  std::optional<int64_t> readOffset() {
    if (take(u"Z")) return 0;
    const int sign = peek() == u'-' ? -1 : 1;
    if (!take(u"-") && !take(u"+")) return {};
    const int hours = readDigits(2, 0, 23, "expected the hours of a time zone");
    const bool hasMinutes = take(u":") || isDigit(peek());
    const int minutes = hasMinutes ? readDigits(2, 0, 59, "expected the minutes of a time zone") : 0;
    return sign * (hours * 3600 + minutes * 60);
  }

  std::u16string_view text_;
  size_t position_;
};

}  // namespace

Period readDate(std::u16string_view text) {
  return TimeReader(text, 0).readDateAlone();
}

TimeValue readTime(std::u16string_view text, size_t& position) {
  TimeReader reader(text, position);
  const TimeValue time = reader.read();
  position = reader.position();
  return time;
}

Period resolve(RelativeTime time, Date now) {
  if (time.unit == TimeUnit::Second) {
    const double instant = now.seconds + static_cast<double>(time.distance);
    return {instant, instant};
  }
  const auto distance = static_cast<int>(time.distance);
  const std::chrono::sys_days today = localDay(now);
  const std::chrono::year_month_day date(today);
  const auto firstOf = [](std::chrono::year_month month) {
    return startOf(std::chrono::sys_days(month / std::chrono::day(1)));
  };
  switch (time.unit) {
    case TimeUnit::Week: {
      const auto sinceMonday = std::chrono::weekday(today) - std::chrono::Monday;
      const auto monday = today - sinceMonday + std::chrono::weeks(distance);
      return {startOf(monday), startOf(monday + std::chrono::weeks(1))};
    }
    case TimeUnit::Month: {
      const auto month = date.year() / date.month() + std::chrono::months(distance);
      return {firstOf(month), firstOf(month + std::chrono::months(1))};
    }
    case TimeUnit::Year: {
      const auto january = date.year() / std::chrono::January + std::chrono::years(distance);
      return {firstOf(january), firstOf(january + std::chrono::years(1))};
    }
    default: {
      const auto day = today + std::chrono::days(distance);
      return {startOf(day), startOf(day + std::chrono::days(1))};
    }
  }
}

}  // namespace standin::metadata
