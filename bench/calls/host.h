// The host as the rows see it.
#pragma once

#include <cstdint>

#include "host/records.h"

namespace bench::calls {

typedef void* Resolver(const char* name);

// The services of the host. Ends the program for a name that no row should ask for.
Resolver resolve;
// Gives out what start-up asks for, in its order and without looking at the name, so that the search for
// names isn't counted.
Resolver resolveStartUp;

// The function of a method of the plug-in that was registered last, by its declaration; null when there is
// none.
void* methodOf(const char* declaration);

}  // namespace bench::calls
