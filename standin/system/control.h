// What a test asks of the system stand-in, beside its public functions.
#pragma once

#include <string>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

// Bundles don't have the functions and data of these names, as on a system that lacks them. Each call
// replaces what the last one said.
STANDIN_API void hideSymbols(std::vector<std::string> names);

}  // namespace standin
