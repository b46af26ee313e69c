// What a Mac loads, on one page: for people who are given the dylib.
#pragma once

#include <string>
#include <vector>

#include "tests/audit/lists.h"

namespace audit {

// Lines of 100 characters at the most: what the file is, what the audit found, exports, load commands,
// segments and sections with their alignment, what runs or changes when it is loaded, and imports by library
// and by the macOS version that first has them. The same for the same file, wherever it is. Works for any
// dylib of one processor. Throws std::runtime_error, with the file's name, when it can't be read.
std::string report(const std::string& dylib, const Lists& lists, const std::vector<std::string>& findings);

}  // namespace audit
