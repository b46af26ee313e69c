// Host dates and CFDates. Both ways a date's fields are taken as GMT, whatever the machine's time zone.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new CFDate, of whole seconds. Null for nil, and when one of the date's fields can't be read. The fields
// are not checked: a month of 13 is the platform's business.
Owned<CFDateRef> RBDate2CFDate(REALobject date);

// A new host date, its fractions of a second dropped. Nil when the host makes none.
Owned<REALobject> CFDate2RBDate(CFDateRef date);
