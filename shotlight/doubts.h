// What is wrong with queries: mistakes that can only be guessed, and bytes that are none.
#pragma once

#include <string>

namespace shotlight {

// Warns on standard error of what are probably mistakes in the query, each once: keys that don't exist, with
// the one that is probably meant, and values that don't suit their keys.
void warnOfDoubts(const std::string& query);

// Throws CommandError, with the place, for a query that is no UTF-8, or begins with a byte order mark.
void checkBytes(const std::string& query);

}  // namespace shotlight
