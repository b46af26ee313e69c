#include "bench/instructions.h"

#include <cstdlib>

#include "bench/processes.h"

namespace bench {

std::optional<uint64_t> instructionsOf(const std::vector<std::string>& command) {
  std::vector<std::string> counted = {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                                      "--trace-children=yes"};
  counted.insert(counted.end(), command.begin(), command.end());
  const Usage usage = run(counted);
  if (usage.status != 0) return {};
  const std::string label = "Collected : ";  // by each process, when it ends
  uint64_t sum = 0;
  for (size_t at = usage.errors.find(label); at != std::string::npos; at = usage.errors.find(label, at)) {
    at += label.size();
    sum += std::strtoull(usage.errors.c_str() + at, nullptr, 10);
  }
  return sum > 0 ? std::optional(sum) : std::nullopt;
}

std::optional<double> instructionsEach(const std::vector<std::string>& less,
                                       const std::vector<std::string>& more, double howManyMore) {
  const auto first = instructionsOf(less);
  const auto second = instructionsOf(more);
  if (!first || !second) return {};
  return (static_cast<double>(*second) - static_cast<double>(*first)) / howManyMore;
}

}  // namespace bench
