// Standard output.
#pragma once

#include <string>

namespace shotlight {

// Both throw CommandError when standard output takes no more. What was printed is sure to have been written
// only after finishOutput.
void print(const std::string& text);
void finishOutput();

}  // namespace shotlight
