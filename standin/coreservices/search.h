// One search: the indexed folders, or those of a scope, looked through for what an expression describes.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "query_expression.h"
#include "result_store.h"
#include "walker.h"

namespace standin::metadata {

struct SearchReport {
  size_t foldersSearched = 0;
  size_t unreadableFolders = 0;  // skipped
  size_t missingFolders = 0;     // named to be searched, but not there
};

struct SearchRequest {
  ExpressionRef expression;
  std::vector<std::string> folders;   // paths; what lies in two of them is found once
  std::vector<std::string> excluded;  // folders whose content is left out, unless named in `folders`
  size_t maximum = std::numeric_limits<size_t>::max();  // of results
};

// Appends what is found to `results`.
SearchReport search(const SearchRequest& request, ResultStore& results);

}  // namespace standin::metadata
