// Commands run as they are by a shell, and what they take.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

struct Usage {
  int status = -1;       // of the command; -1 where it was ended or could not be run
  double seconds = 0;    // of the processor, in user mode and in the kernel, with that of its children
  double elapsed = 0;    // seconds from its start to its end
  double megabytes = 0;  // of memory at its peak
  size_t lines = 0;      // that it printed to standard output
  std::string errors;    // what it printed to standard error
};

// Runs the command, found by PATH, with its standard output in a file, which is thrown away once its lines
// are counted.
Usage run(const std::vector<std::string>& command);

}  // namespace bench
