// The calls that reach the stand-ins, by the gate's log.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "standin/gate/gate.h"

typedef std::vector<std::string> Calls;

// The calls that reached the platform and the host while `act` ran, in order.
template <typename Act>
Calls callsOf(Act act) {
  standin::startLog();
  act();
  return standin::stopLog();
}

// The same, with the type of what is released: "CFRelease CFString".
template <typename Act>
Calls detailedCallsOf(Act act) {
  standin::startDetailedLog();
  act();
  return standin::stopLog();
}

// Those whose names begin so.
inline Calls startingWith(std::string_view prefix, Calls calls) {
  std::erase_if(calls, [prefix](const std::string& call) { return !call.starts_with(prefix); });
  return calls;
}

// The first and the last ones; all where there are fewer.
inline Calls firstOf(const Calls& calls, size_t count) {
  return Calls(calls.begin(), calls.begin() + static_cast<ptrdiff_t>(std::min(count, calls.size())));
}
inline Calls lastOf(const Calls& calls, size_t count) {
  return Calls(calls.end() - static_cast<ptrdiff_t>(std::min(count, calls.size())), calls.end());
}

// From the first call of that name on, and what came after it; none, and a failure, without such a call.
inline Calls fromFirst(const std::string& name, const Calls& calls) {
  const auto found = std::find(calls.begin(), calls.end(), name);
  EXPECT_NE(calls.end(), found) << "there is no call of " << name;
  return Calls(found, calls.end());
}
inline Calls afterFirst(const std::string& name, const Calls& calls) {
  const Calls rest = fromFirst(name, calls);
  return lastOf(rest, rest.size() - std::min<size_t>(1, rest.size()));
}
