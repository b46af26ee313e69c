// Standard output and standard error.
#pragma once

#include <exception>
#include <optional>
#include <string>

namespace shotlight {

// Before anything else. Takes the places of standard streams that are closed, so that no file opened later
// gets their numbers and what is printed; writing to such a stream is still an error. So is writing more to a
// file than the limit of this process allows, which would end it otherwise.
void prepareOutput();

// Whether another program reads what is printed, as it is printed.
bool outputIsPipe();

// The columns of the terminal that standard output is: as the terminal says, else as the environment's
// COLUMNS does. Nothing where neither does, and where output is no terminal.
std::optional<size_t> outputWidth();

// Both throw CommandError when standard output takes no more. What was printed is sure to have been written
// only after finishOutput. `print` prints the bytes as they are: names and texts from outside go through
// table.h or text.h first.
void print(const std::string& text);
void finishOutput();

// All that goes to standard error, but for the line of progress and what is said when a signal or the lack of
// memory leaves time for nothing else, neither of which has a text from outside in it: one line, of which
// nothing reaches the terminal that it would obey (standin::shownText), whatever it was put together of.
void printNote(const std::string& line);
// The same after the program's name.
void complain(const std::string& line);
void reportError(const std::exception& error);

}  // namespace shotlight
