// What a test asks of the system stand-in, beside its public functions.
//
// This folder has what only the Mac's own Core Foundation adds to a plain one: the notification centre, run
// loops, bundles, attributed strings, file references. The other stand-ins and the tests include the headers
// in it, of paths, files and the clock, but none of run_loop/. It includes the gate, Core Foundation's public
// headers and CFRuntime.h.
#pragma once

#include <string>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

// Bundles don't have the functions and data of these names, as on a system that lacks them. Each call
// replaces what the last one said.
STANDIN_API void hideSymbols(std::vector<std::string> names);

}  // namespace standin
