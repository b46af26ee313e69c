// From any host variant to a Core Foundation value.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "host/owned.h"

// A new value; the variant is borrowed. Null for nil, for objects of unknown classes, and when no value can
// be made.
Owned<CFTypeRef> CopyVariantAsCFType(REALobject variant);
