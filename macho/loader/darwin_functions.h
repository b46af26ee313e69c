// Functions that images import of macOS and that this system's C library has under no name.
#pragma once

#include <string>

namespace macho {

// By the C name; null for any other.
void* darwinFunction(const std::string& name);

}  // namespace macho
