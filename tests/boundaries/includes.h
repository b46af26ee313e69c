// Which source files include which.
#pragma once

#include <string>
#include <vector>

struct Include {
  std::string file;  // both within the project
  std::string included;
};

// Every include of one of the project's sources by another. What is built, and folders that are hidden, don't
// count.
std::vector<Include> includesOf(const std::string& project);
