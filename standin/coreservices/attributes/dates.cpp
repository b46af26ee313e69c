#include "standin/coreservices/attributes/dates.h"

#include <ctime>

namespace standin::metadata {

int64_t clockOffsetAt(int64_t seconds) {
  const auto time = static_cast<time_t>(seconds);
  struct tm local {};
  return ::localtime_r(&time, &local) ? int64_t{local.tm_gmtoff} : 0;
}

// mktime() isn't used: where clocks show a time twice, its answer depends on the calls before it.
int64_t timeOfClock(int64_t local) {
  constexpr int64_t kBeyondAnyOffset = int64_t{26} * 3600;
  const int64_t before = clockOffsetAt(local - kBeyondAnyOffset);
  const int64_t after = clockOffsetAt(local + kBeyondAnyOffset);
  const bool isBeforeChange = clockOffsetAt(local - before) == before;
  const bool isAfterChange = clockOffsetAt(local - after) == after;
  return local - (isBeforeChange || !isAfterChange ? before : after);
}

}  // namespace standin::metadata
