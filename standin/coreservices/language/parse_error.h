// What is wrong with a query string, and where.
#pragma once

#include <cstddef>
#include <string>

namespace standin::metadata {

struct ParseError {
  size_t position;  // in UTF-16 units from the start of the string, at most its length
  std::string reason;
};

}  // namespace standin::metadata
