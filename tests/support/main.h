// The main of test programs that are told on the command line which files they test.
#pragma once

#include <string>
#include <vector>

struct FileOption {
  const char* name;  // "plugin", given as --plugin=FILE
  std::string* file;
};

// All that the program takes besides GoogleTest's options; none may be left out. Each program defines its
// own. The files are set before tests are registered: a generator of parameters may ask for them.
extern const std::vector<FileOption> fileOptions;
