// What a command could not see: its results stand, and may lack something.
#pragma once

namespace shotlight {

// Says on standard error what searches and items met since the last call that could not be read: the first by
// name, the rest by their number.
void tellUnseen();

// Something is missing, and it has been said.
void noteMissing();

// The exit status of a command that has told all of that: kIncomplete in the place of kFound and kNothing
// where something was missing.
int completeStatus(int status);

}  // namespace shotlight
