// What the plug-in's calls cost beside the twin's: the rows that bench-calls prints and cost-tests hold.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace bench::calls {

// Instructions of one call, with those of the functions that it calls in turn: the stubs of host and
// platform.
struct Row {
  std::string what;
  int plugin = 0;  // compiled by clang as ELF
  int twin = 0;
  int dylib = 0;

  double ratio() const { return static_cast<double>(plugin) / twin; }
  double dylibRatio() const { return static_cast<double>(dylib) / twin; }
};

// Counted by callgrind. Nothing where there is no valgrind, or where the driver fails.
std::optional<std::vector<Row>> countRows();

// Where the calls that the plug-in (or the dylib) makes first differ from the twin's, for people; empty when
// they don't: the same functions of host and platform in the same order, with the same arguments, and with
// buffers of the same size that are cleared or not.
std::string differenceOfCalls();

}  // namespace bench::calls
