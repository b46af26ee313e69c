// What the plug-in's calls cost beside the twin's: the rows that bench-calls prints and cost-tests hold.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench::calls {

// Instructions of one call, with those of the stubs of host and platform that it calls.
struct Row {
  std::string what;
  int stubs = 0;   // the part of the twin's that is in the stubs
  int plugin = 0;  // compiled by clang as ELF
  int twin = 0;
  int dylib = 0;
  int dylibTwin = 0;

  double ratio() const { return static_cast<double>(plugin) / twin; }
  double dylibRatio() const { return static_cast<double>(dylib) / dylibTwin; }
};

// Counted by callgrind. Nothing where there is no valgrind, or where the driver fails.
std::optional<std::vector<Row>> countRows();

struct Comparison {
  size_t calls = 0;        // that are the same
  std::string difference;  // for people; empty when there is none
};

// The calls that reach host and platform from the plug-in, and from the dylib, beside those from the twin:
// the same functions in the same order, with the same arguments, and with buffers of the same size, cleared
// or not. Ends at the first difference.
Comparison compareCalls();

}  // namespace bench::calls
