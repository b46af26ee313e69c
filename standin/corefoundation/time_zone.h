// Time zones, as the calendar needs them.
#pragma once

#include <CoreFoundation/CFTimeZone.h>

namespace cf {

// Ends the process in the name of `call` when `zone` isn't a time zone.
CFTimeInterval secondsFromGMT(CFTimeZoneRef zone, const char* call);

}  // namespace cf
