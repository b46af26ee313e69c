#include "search.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "file_attributes.h"

namespace standin::metadata {
namespace {

class Collector : public WalkVisitor {
 public:
  Collector(const SearchRequest& request, ResultStore& results) : request_(request), results_(results) {}

  bool full() const { return results_.size() >= request_.maximum; }

  void entered(const std::string& path, size_t nameLength) override {
    const std::string name = path.substr(path.size() - nameLength);
    open_.push_back({ResultStore::kNoFolder, name});
  }
  void left() override { open_.pop_back(); }

  bool found(int folder, const std::string& path, const char* name) override {
    FileRecord record(folder, path, name, name);
    if (matches(*request_.expression, record)) results_.add(currentFolder(), name);
    return !full();
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
      above = open_[first].stored = results_.addFolder(above, open_[first].name);
    }
    return above;
  }

  const SearchRequest& request_;
  ResultStore& results_;
  std::vector<OpenFolder> open_;
};

bool liesIn(const std::string& path, const std::string& folder) {
  if (!path.starts_with(folder)) return false;
  return path.size() == folder.size() || folder.back() == '/' || path[folder.size()] == '/';
}

// The real paths of the folders that are there, without those that lie in others.
std::vector<std::string> distinctFolders(const std::vector<std::string>& folders, size_t& missing) {
  std::vector<std::string> real;
  for (const std::string& folder : folders) {
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(folder.c_str(), nullptr), &std::free);
    if (path) {
      real.emplace_back(path.get());
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

}  // namespace

SearchReport search(const SearchRequest& request, ResultStore& results) {
  SearchReport report;
  const std::vector<FileId> excluded = identify(request.excluded);
  for (const std::string& folder : distinctFolders(request.folders, report.missingFolders)) {
    Collector collector(request, results);
    if (collector.full()) break;
    const WalkReport walked = walk(folder, excluded, collector);
    report.foldersSearched += walked.folders;
    report.unreadableFolders += walked.unreadableFolders;
  }
  results.shrink();
  return report;
}

}  // namespace standin::metadata
