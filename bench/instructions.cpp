#include "bench/instructions.h"

#include <cstdlib>

#include "bench/processes.h"

namespace bench {

std::optional<uint64_t> instructionsOf(const std::vector<std::string>& command) {
  std::vector<std::string> counted = {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"};
  counted.insert(counted.end(), command.begin(), command.end());
  const Usage usage = run(counted);
  const std::string label = "Collected : ";
  const size_t at = usage.errors.rfind(label);
  if (usage.status != 0 || at == std::string::npos) return {};
  return std::strtoull(usage.errors.c_str() + at + label.size(), nullptr, 10);
}

std::optional<double> instructionsEach(const std::vector<std::string>& less,
                                       const std::vector<std::string>& more, double howManyMore) {
  const auto first = instructionsOf(less);
  const auto second = instructionsOf(more);
  if (!first || !second) return {};
  return (static_cast<double>(*second) - static_cast<double>(*first)) / howManyMore;
}

}  // namespace bench
