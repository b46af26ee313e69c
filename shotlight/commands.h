// The commands. Each takes the arguments after its name, prints to standard output, and answers the
// program's exit status. They throw UsageError and CommandError.
#pragma once

#include "shotlight/arguments.h"

namespace shotlight {

enum ExitStatus {
  kFound = 0,
  kNothing = 1,
  kError = 2,
  kIncomplete = 3,    // found or not, something could not be read
  kInterrupted = 128  // and the signal's number
};

int find(const Arguments& arguments);
int attrs(const Arguments& arguments);
int schema(const Arguments& arguments);
int keys(const Arguments& arguments);
int program(const Arguments& arguments);
int store(const Arguments& arguments);
int window(const Arguments& arguments);

}  // namespace shotlight
