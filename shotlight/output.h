// Standard output.
#pragma once

#include <string>

namespace shotlight {

// Takes the places of standard streams that are closed, so that no file opened later gets their numbers and
// what is printed. Writing to such a stream is still an error.
void keepStandardStreamsApart();

// Whether another program reads what is printed, as it is printed.
bool outputIsPipe();

// Both throw CommandError when standard output takes no more. What was printed is sure to have been written
// only after finishOutput.
void print(const std::string& text);
void finishOutput();

}  // namespace shotlight
