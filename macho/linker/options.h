// The command line.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace macho {

struct Options {
  std::string output, debugMap, installName, imports;
  std::vector<std::string> exported, objects;
  uint32_t minimumSystem = 0x000A0600;   // 10.6
  uint32_t currentVersion = 0x00010000;  // 1.0
  bool help = false;
};

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

extern const char kHelp[];

Options parseOptions(const std::vector<std::string>& words);  // without the program's name; throws UsageError

}  // namespace macho
