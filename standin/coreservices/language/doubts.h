// Comparisons that are well formed, and that no file can satisfy by their very form: probably mistakes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standin/coreservices/language/expression.h"

namespace standin::metadata {

struct Doubt {
  size_t position, length;  // of the comparison in the query string, in UTF-16 units
  std::string key;
  std::string reason;  // why its value doesn't suit the key, and what would; empty where there is no such key
};

// In the order of the query string.
std::vector<Doubt> doubtsOf(const Expression& expression);

}  // namespace standin::metadata
