// The state behind control.h, for the query's own use.
#pragma once

#include <string>
#include <vector>

#include "control.h"

namespace standin::metadata {

struct Settings {
  std::vector<std::string> indexedFolders = {"/"};
  std::vector<std::string> excludedFolders = {"/proc", "/sys", "/dev"};
  SearchStatistics lastSearch;
};

Settings& settings();

}  // namespace standin::metadata
