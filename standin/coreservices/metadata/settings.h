// The state behind control.h, for the query's own use.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "standin/coreservices/metadata/control.h"

namespace standin::metadata {

class QueryRun;

struct Settings {
  std::vector<std::string> indexedFolders = {"/"};
  std::vector<std::string> excludedFolders = {"/proc", "/sys", "/dev"};
  SearchStatistics lastSearch;
  SearchScope lastScope;
  std::string updateProblem;
  std::set<QueryRun*> followers;  // with live updates
};

Settings& settings();

}  // namespace standin::metadata
