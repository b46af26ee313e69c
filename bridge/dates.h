// Host dates and CFDates. In both directions a date's fields are in GMT, whatever the machine's time zone.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new CFDate, of whole seconds. Null for nil, and when one of the date's fields can't be read. The fields
// are not checked: what a month of 13 means is left to the platform.
Owned<CFDateRef> RBDate2CFDate(REALobject date);

// A new host date, without the fraction of a second. Nil when the host makes none.
Owned<REALobject> CFDate2RBDate(CFDateRef date);
