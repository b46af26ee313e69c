// shotlight find --live
#pragma once

#include <optional>

#include "shotlight/color.h"
#include "shotlight/interrupts.h"
#include "standin/host/host.h"

namespace shotlight {

// Prints the results of the query, which has gathered and takes updates, and then each change of them, until
// a signal comes or the time is over. `colors` are those of the paths; null for none. Throws CommandError.
void follow(const standin::host::Value& query, std::optional<double> seconds, Interrupts& interrupts,
            const FileColors* colors);

}  // namespace shotlight
