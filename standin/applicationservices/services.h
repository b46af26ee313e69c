// The declarations of ApplicationServices for those who define what is declared: what a system may lack is a
// weak import for its users, a definition that is weak would be replaced by any other.
#pragma once

#include <AvailabilityMacros.h>
#undef WEAK_IMPORT_ATTRIBUTE
#define WEAK_IMPORT_ATTRIBUTE
#include <ApplicationServices/ApplicationServices.h>
