// Instructions instead of time: the same number in every run, whatever else the machine does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bench {

// How many instructions the command takes in user mode, with those of the programs that it runs, counted by
// valgrind; what it prints is thrown away.
// Nothing where there is no valgrind, or where the command fails under it.
std::optional<uint64_t> instructionsOf(const std::vector<std::string>& command);

// What a program takes for each of the things that it does more of in the second command than in the first.
std::optional<double> instructionsEach(const std::vector<std::string>& less,
                                       const std::vector<std::string>& more, double howManyMore);

}  // namespace bench
