// What ends the program with status 2. The texts are put together of whatever they are about: nobody but
// reportError (output.h) prints them.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace shotlight {

// A mistake on the command line: what was wrong and what to do. One line.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Something that the program could not do: what, where, and what to do. One line, and those below it.
struct CommandError : std::runtime_error {
  explicit CommandError(const std::string& line, std::vector<std::string> below = {})
      : std::runtime_error(line), linesBelow(std::move(below)) {}
  std::vector<std::string> linesBelow;
};

// One of several files can't be shown; the others can.
struct FileError : CommandError {
  using CommandError::CommandError;
};

}  // namespace shotlight
