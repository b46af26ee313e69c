// The declarations of CoreServices for those who define what is declared: its users import everything weakly,
// a library that defined it weakly would be replaced by any other definition.
#pragma once

#include <AvailabilityMacros.h>
#undef WEAK_IMPORT_ATTRIBUTE
#define WEAK_IMPORT_ATTRIBUTE
#include <CoreServices/CoreServices.h>
