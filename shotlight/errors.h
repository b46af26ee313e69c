// What ends the program with status 2.
#pragma once

#include <stdexcept>

namespace shotlight {

// A mistake on the command line: what was wrong and what to do.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Something that the program could not do: what, where, and what to do.
struct CommandError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// One of several files can't be shown; the others can.
struct FileError : CommandError {
  using CommandError::CommandError;
};

}  // namespace shotlight
