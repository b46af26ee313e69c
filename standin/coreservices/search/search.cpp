#include "standin/coreservices/search/search.h"

#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/coreservices/language/match.h"

namespace standin::metadata {

class Search::Collector : public WalkVisitor {
 public:
  explicit Collector(Search& search) : search_(search) {}

  void entered(const std::string& path, size_t nameLength) override {
    open_.push_back({ResultStore::kNoFolder, path.substr(path.size() - nameLength)});
  }
  void left() override { open_.pop_back(); }

  void found(int folder, const std::string& path, const char* name) override {
    FileRecord record(folder, path, name, name);
    if (!matches(*search_.request_.expression, record)) return;
    const ResultStore::File file = search_.results_.add(currentFolder(), name);
    ++search_.found_;
    if (search_.onFound_) search_.onFound_(file, record);
  }

 private:
  struct OpenFolder {
    ResultStore::Folder stored;
    std::string name;
  };

  // Folders are stored when something in them is found, with those above them.
  ResultStore::Folder currentFolder() {
    size_t first = open_.size();
    while (first > 0 && open_[first - 1].stored == ResultStore::kNoFolder) --first;
    ResultStore::Folder above = first > 0 ? open_[first - 1].stored : ResultStore::kNoFolder;
    for (; first < open_.size(); ++first) {
      above = open_[first].stored = search_.results_.addFolder(above, open_[first].name);
    }
    return above;
  }

  Search& search_;
  std::vector<OpenFolder> open_;
};

Search::Search(SearchRequest request, ResultStore& results, Found found)
    : request_(std::move(request)),
      results_(results),
      onFound_(std::move(found)),
      folders_(distinctFolders(request_.folders, report_.missingFolders)),
      excluded_(fileIdsOf(request_.excluded)) {}

Search::~Search() = default;

bool Search::nextFolder() {
  if (walk_) {
    report_.foldersSearched += walk_->report().folders;
    report_.unreadableFolders += walk_->report().unreadableFolders;
    walk_.reset();
  }
  if (next_ == folders_.size()) return false;
  collector_ = std::make_unique<Collector>(*this);
  walk_ = std::make_unique<Walk>(folders_[next_++], excluded_, *collector_);
  return true;
}

bool Search::step() {
  if (found_ >= request_.maximum) return false;
  if (!walk_ || !walk_->step()) return nextFolder();
  return found_ < request_.maximum;
}

SearchReport Search::report() const {
  SearchReport report = report_;
  if (walk_) {
    report.foldersSearched += walk_->report().folders;
    report.unreadableFolders += walk_->report().unreadableFolders;
  }
  return report;
}

}  // namespace standin::metadata
