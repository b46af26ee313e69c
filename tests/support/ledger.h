// The stand-ins' ledger in tests: compared, printed, and told in a failure's message.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "standin/gate/gate.h"

typedef std::vector<standin::LedgerLine> LedgerLines;

namespace standin {
inline bool operator==(const LedgerLine& a, const LedgerLine& b) {
  return a.kind == b.kind && a.count == b.count;
}
inline void PrintTo(const LedgerLine& line, std::ostream* out) {
  *out << line.count << " " << line.kind;
}
}  // namespace standin

// The ledger in one line, for a failure's message: empty when nothing is alive.
inline std::string alive() {
  std::string lines;
  for (const standin::LedgerLine& line : standin::ledger()) {
    lines += line.kind + ": " + std::to_string(line.count) + "; ";
  }
  return lines;
}
