// What the calendar asks of a time zone.
#pragma once

#include <CoreFoundation/CFTimeZone.h>

namespace cf {

// Ends the process in the name of `call` when `zone` isn't a time zone.
CFTimeInterval secondsFromGMT(CFTimeZoneRef zone, const char* call);

}  // namespace cf
