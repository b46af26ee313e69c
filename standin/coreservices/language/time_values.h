// Times as queries name them, and the periods that they stand for.
//
//   time := '$time.' unit ('(' NUMBER ')')? | '$time.iso' '(' DATE ('T' CLOCK ZONE?)? ')'
//   unit := 'now' | 'today' | 'yesterday' | 'this_week' | 'this_month' | 'this_year'
//
// NUMBER is a whole number of units from the one named: of seconds for `now`, of days for `today` and
// `yesterday`. DATE is 2011-03-05; CLOCK is 12:00, 12:00:00 or 12:00:00.25; ZONE is Z, +01:00, +0100 or +01.
//
// A date alone, without `$time`, is DATE ('T' CLOCK ZONE?)?, too, as dates are printed. It lasts as long as
// what it names last: a day, a minute or a second; with a part of a second it is that moment, as all of
// `$time.iso` are that have a CLOCK.
//
// Days, weeks, months and years are those of the process's time zone (TZ), and so is a DATE or CLOCK without
// a ZONE. Weeks start on Monday, as ISO 8601 has it. Seconds count from 2001-01-01 00:00:00 GMT.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "standin/coreservices/attributes/dates.h"
#include "standin/coreservices/language/parse_error.h"

namespace standin::metadata {

// From its start up to, but not including, its end. An instant is a period that ends where it starts.
struct Period {
  double start;
  double end;
  bool contains(double seconds) const {
    return start == end ? seconds == start : seconds >= start && seconds < end;
  }
};

enum class TimeUnit : uint8_t { Second, Day, Week, Month, Year };

struct RelativeTime {
  TimeUnit unit;
  int64_t distance;  // in units from the current one, at most 10,000 years
};

// What is relative to the time when a query starts waits until then; a date is known at once.
using TimeValue = std::variant<RelativeTime, Period>;

inline constexpr std::u16string_view kTimePrefix = u"$time";

// Reads the time that starts at `position` of `text`, and moves `position` behind it. Throws a ParseError.
TimeValue readTime(std::u16string_view text, size_t& position);

// Reads the whole text as a date alone. Throws a ParseError.
Period readDate(std::u16string_view text);

// A second counts from `now` exactly and is an instant.
Period resolve(RelativeTime time, Date now);

}  // namespace standin::metadata
