#pragma once

#include <string>

namespace standin::host {

// A name for a gate that is known only at run time: the same text always gives the same address, good for the
// life of the process.
const char* gateName(const std::string& name);

}  // namespace standin::host
