// shotlight find
#pragma once

#include "shotlight/options.h"

namespace shotlight {

// Prints what the query finds. True when there were results. Throws UsageError and CommandError.
bool find(const FindOptions& options);

}  // namespace shotlight
