#include "standin/coreservices/search/search.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

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

namespace {

std::optional<std::string> realPath(const std::string& path) {
  if (!path.starts_with('/')) return {};
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  if (!real) return {};
  return real.get();
}

bool isFolder(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

bool liesIn(const std::string& path, const std::string& folder) {
  if (!path.starts_with(folder)) return false;
  return path.size() == folder.size() || folder.back() == '/' || path[folder.size()] == '/';
}

std::string intendedPath(const std::string& path) {
  if (std::optional<std::string> real = realPath(path)) return *real;
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos || slash == 0) return path;
  const std::string folder = intendedPath(path.substr(0, slash));
  return (folder == "/" ? "" : folder) + path.substr(slash);
}

std::vector<std::string> distinctFolders(const std::vector<std::string>& folders, size_t& missing) {
  std::vector<std::string> real;
  for (const std::string& folder : folders) {
    std::optional<std::string> path = realPath(folder);
    if (path && isFolder(*path)) {
      real.push_back(std::move(*path));
    } else {
      ++missing;
    }
  }
  std::vector<std::string> distinct;
  for (size_t i = 0; i < real.size(); ++i) {
    const auto coversThis = [&](const std::string& other) { return liesIn(real[i], other); };
    const bool earlier = std::any_of(distinct.begin(), distinct.end(), coversThis);
    const bool later =
        std::any_of(real.begin() + static_cast<ptrdiff_t>(i) + 1, real.end(),
                    [&](const std::string& other) { return other != real[i] && coversThis(other); });
    if (!earlier && !later) distinct.push_back(real[i]);
  }
  return distinct;
}

std::vector<FileId> identify(const std::vector<std::string>& folders) {
  std::vector<FileId> ids;
  for (const std::string& folder : folders) {
    struct stat info;
    if (::stat(folder.c_str(), &info) == 0) ids.push_back({info.st_dev, info.st_ino});
  }
  return ids;
}

Search::Search(SearchRequest request, ResultStore& results, Found found)
    : request_(std::move(request)),
      results_(results),
      onFound_(std::move(found)),
      folders_(distinctFolders(request_.folders, report_.missingFolders)),
      excluded_(identify(request_.excluded)) {}

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
