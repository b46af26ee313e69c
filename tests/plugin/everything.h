// All that host code can do with the plug-in, for tests that take something away from under it.
#pragma once

#include <string>
#include <vector>

#include "tests/plugin/fixture.h"

// Uses every class and the global method, in a folder that is indexed and holds the files f1 and f2 of 3
// bytes. One line for each answer.
std::vector<std::string> useEverything(const std::string& folder);

// The same without a tag, so that no destructor gives anything back to the host.
std::vector<std::string> useMethods(const std::string& folder);

// Whether such a line is what is left of its like in `complete` where something could not be had: a neutral
// value (nil, 0, false, empty), an exception, or a list with fewer elements or neutral ones.
bool isDegraded(const std::string& line, const std::vector<std::string>& complete);
