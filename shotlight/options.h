// The command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace shotlight {

struct FindOptions {
  std::string query;
  std::vector<std::string> folders;  // empty: the current folder
  std::vector<std::string> keys;     // empty: the default columns
  int32_t limit = 0;                 // 0: all results
  std::string plugin;                // empty: the dylib built with this program
  bool help = false;
};

// The arguments after the program's name. Throws UsageError.
FindOptions parseCommandLine(const std::vector<std::string>& arguments);

extern const char helpText[];

}  // namespace shotlight
