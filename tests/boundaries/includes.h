// Which source files include which.
#pragma once

#include <string>
#include <vector>

struct Include {
  std::string file;  // both within the project
  std::string included;
};

// The includes, by file, of the project's sources outside a folder that lead into that folder.
std::vector<Include> includesFromOutside(const std::string& project, const std::string& folder);
