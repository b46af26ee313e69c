// All that host code can do with the plug-in, for tests that take something away from under it.
#pragma once

#include <string>
#include <vector>

#include "tests/plugin/fixture.h"

// Uses every class and the global method, in a folder that holds the files f1 and f2 of 3 bytes. One line for
// each answer.
std::vector<std::string> useEverything();

// Whether such a line holds nothing but a neutral value (nil, 0, false, empty), or an exception.
bool isNeutral(const std::string& line);
