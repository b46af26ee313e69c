// search/: from folders and an expression to results: the search, its live changes, the store of results and
// what they are sorted by, all without Core Foundation. It includes the rooms attributes/, disk/, files/ and
// language/, and standin/system/paths.h; nothing of metadata/.
//
// Here: one search: folders looked through for what an expression describes, entry by entry, so that it
// can be paused.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "standin/coreservices/disk/walker.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/language/expression.h"
#include "standin/coreservices/search/result_store.h"

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

class Search {
 public:
  // Called for each result once it is in the store, with the record that it was found by.
  using Found = std::function<void(ResultStore::File, FileRecord&)>;

  // Results are appended to `results`, which must outlive the search.
  Search(SearchRequest request, ResultStore& results, Found found = {});
  ~Search();
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;

  // Looks at one more entry at the most. Answers whether there is more to come.
  bool step();
  size_t found() const { return found_; }
  SearchReport report() const;

 private:
  class Collector;

  bool nextFolder();

  const SearchRequest request_;
  ResultStore& results_;
  const Found onFound_;
  size_t found_ = 0;
  SearchReport report_;  // of the folders that are done
  std::vector<std::string> folders_;
  size_t next_ = 0;  // of the folders
  std::vector<FileId> excluded_;
  std::unique_ptr<Collector> collector_;
  std::unique_ptr<Walk> walk_;
};

}  // namespace standin::metadata
