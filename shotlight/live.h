// shotlight find --live
#pragma once

#include <optional>

#include "shotlight/interrupts.h"
#include "standin/host/host.h"

namespace shotlight {

// Prints the results of the query, which has gathered and takes updates, and then each change of them, until
// a signal comes or the time is over. Throws CommandError.
void follow(const standin::host::Value& query, std::optional<double> seconds, Interrupts& interrupts);

}  // namespace shotlight
