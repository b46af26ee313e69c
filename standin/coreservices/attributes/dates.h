// Dates, and the time that clocks show in the process's time zone (TZ).
#pragma once

#include <cstdint>

namespace standin::metadata {

struct Date {
  double seconds;  // since 2001-01-01 00:00:00 GMT
  bool operator==(const Date&) const = default;
};

// From 1970-01-01 to 2001-01-01, in seconds.
inline constexpr int64_t kFrom1970To2001 = 978307200;

// How far local clocks are ahead of GMT, in seconds, at a time in seconds since 1970. 0 where that isn't
// known.
int64_t clockOffsetAt(int64_t seconds);

// The time, in seconds since 1970, when local clocks show `local` seconds since 1970: the first time where
// they show it twice; where they skip it, as long after the change as if there had been none.
int64_t timeOfClock(int64_t local);

}  // namespace standin::metadata
