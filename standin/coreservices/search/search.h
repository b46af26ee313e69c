// search/: from folders and an expression to results: the search, its live changes, the store of results and
// what they are sorted by, all without Core Foundation. It includes the rooms attributes/, content/, disk/,
// files/ and language/, and standin/system/paths.h; nothing of metadata/.
//
// Here: one search: folders looked through for what an expression describes, entry by entry, so that it
// can be paused. What must be read in files is read beside it, several files at once, while it walks on;
// results come in the order of the walk all the same.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/disk/walker.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/language/match.h"
#include "standin/coreservices/search/result_store.h"
#include "standin/coreservices/search/time_watch.h"

namespace standin::metadata {

struct SearchReport {
  size_t foldersSearched = 0;
  size_t unreadableFolders = 0;  // skipped
  size_t missingFolders = 0;     // named to be searched, but not there
  size_t entries = 0;            // looked at
  size_t waiting = 0;            // of these, for what is in them to be read
  bool walked = false;           // every entry has been looked at
};

struct SearchRequest {
  ExpressionRef expression;
  std::vector<std::string> folders;   // paths; what lies in two of them is found once
  std::vector<std::string> excluded;  // folders whose content is left out, unless named in `folders`
  size_t maximum = std::numeric_limits<size_t>::max();  // of results
  std::vector<FileAttribute> alsoRead = {};             // attributes that will be asked of every result
  // The `folders`, which may then be files as well, are looked at themselves, and nothing below them.
  bool themselves = false;
  WalkFilter filter = {};  // of what is in the folders; where they lie in one another, the inner one counts
  TimeWatch* times = nullptr;  // is shown every file that was decided; it must outlive the search
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

  // Looks at one more entry at the most, or waits a moment for what is in one. Answers whether there is more
  // to come.
  bool step();
  size_t found() const { return found_; }
  SearchReport report() const;
  // Those that are decided and wait for one before them become results. It is the last that is asked of it.
  void addDecided();

 private:
  class Collector;

  // A folder of the walk. It is stored when something in it is found, with those above it.
  struct OpenFolder {
    std::shared_ptr<OpenFolder> above;
    std::string name;
    ResultStore::Folder stored = ResultStore::kNoFolder;
  };
  // An entry that can't be decided yet, or comes after one.
  struct Waiting {
    std::shared_ptr<OpenFolder> folder;
    std::string path;
    bool isResult;  // decided
    int asked = 1;  // how often a reader was asked, as the file changed
  };

  void chooseRoots();
  bool nextFolder();
  bool walkOn();
  void lookAtPlace(const std::string& path);
  void look(FileRecord& record, const std::shared_ptr<OpenFolder>& folder, const char* name);
  Match matchOf(FileRecord& record);
  void settleFirst(std::chrono::milliseconds patience);
  void settleAnyway(const std::shared_ptr<OpenFolder>& folder, const std::string& path);
  void add(const std::shared_ptr<OpenFolder>& folder, std::string_view name, FileRecord& record);
  ResultStore::Folder stored(OpenFolder& folder);

  const ManyLookups manyLookups_;
  const SearchRequest request_;
  ResultStore& results_;
  const Found onFound_;
  std::vector<FileAttribute> toBeKnown_;  // of results, as more than their names tells them
  size_t found_ = 0;
  SearchReport report_;  // of the folders that are done
  std::vector<std::string> folders_;
  size_t next_ = 0;  // of the folders
  std::vector<FileId> excluded_;
  std::unique_ptr<Collector> collector_;
  std::unique_ptr<Walk> walk_;
  std::vector<Value> values_;  // memory for matching
  bool walked_ = false;
  std::deque<Waiting> waiting_;  // in the order of the walk
  size_t undecided_ = 0;         // of them
  bool mayBeKnown_ = false;      // what the first of them waits for
  bool asked_ = false;           // a reader
  size_t steps_ = 0;
};

}  // namespace standin::metadata
