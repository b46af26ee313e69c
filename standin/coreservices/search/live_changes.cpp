#include "standin/coreservices/search/live_changes.h"

#include <limits.h>

#include <algorithm>
#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/coreservices/disk/walker.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/language/match.h"
#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

// Lists what is in a folder that an expression describes.
class Matching : public WalkVisitor {
 public:
  explicit Matching(const Expression& expression) : expression_(expression) {}
  void entered(const std::string&, size_t) override {}
  void left() override {}
  void found(int folder, const std::string& path, const char* name) override {
    FileRecord record(folder, path, name, name, Reading::Now);
    Match matches = match(expression_, record);
    if (matches == Match::Unknown) {
      FileRecord anyway(folder, path, name, name, Reading::Anyway);
      matches = match(expression_, anyway);
    }
    if (matches == Match::Yes) paths.push_back(pathIn(path, name));
  }
  std::vector<std::string> paths;

 private:
  const Expression& expression_;
};

}  // namespace

LiveChanges::LiveChanges(ExpressionRef expression, std::vector<std::string> folders,
                         std::vector<std::string> excluded, WalkFilter filter)
    : expression_(std::move(expression)),
      folders_(std::move(folders)),
      excluded_(std::move(excluded)),
      filter_(std::move(filter)) {}

void LiveChanges::add(const std::string& path, Extent extent) {
  const auto [entry, isNew] = extents_.try_emplace(path, extent);
  if (isNew) {
    queue_.push_back(path);
  } else {
    entry->second = std::max(entry->second, extent);
  }
}

void LiveChanges::add(const std::vector<TreeChange>& changes) {
  reachedFolder_.clear();
  for (const TreeChange& change : changes) {
    const bool wholeFolder = change.kind == TreeChange::Gone && change.folder;
    const Extent known = wholeFolder ? Extent::KnownBelow : Extent::Entry;
    add(change.path, change.kind == TreeChange::Rescan ? Extent::Rescan : known);
  }
}

std::string LiveChanges::take(const ResultStore& known) {
  const std::string path = std::move(queue_.front());
  queue_.pop_front();
  const auto entry = extents_.find(path);
  const Extent extent = entry->second;
  extents_.erase(entry);
  if (extent >= Extent::KnownBelow) {
    for (const std::string& below : known.pathsBelow(path)) add(below, Extent::Entry);
  }
  if (extent == Extent::Rescan) {
    const std::vector<FileId> excluded = fileIdsOf(excluded_);
    Matching matching(*expression_);
    const std::string* const around = folderAround(path + '/');
    for (Walk walk(path, excluded, matching, filter_, around ? *around : path); walk.step();) {
    }
    for (const std::string& below : matching.paths) add(below, Extent::Entry);
  }
  return path;
}

// False where a symbolic link has taken the place of a folder on the path: what the link leads to isn't below
// it.
bool LiveChanges::isReached(const std::string& path) {
  std::string folder = parentPath(path);
  if (folder == reachedFolder_) return true;
  if (intendedPath(folder) != folder) return false;
  reachedFolder_ = std::move(folder);
  return true;
}

// The innermost of the folders that the path lies in; null when there is none.
const std::string* LiveChanges::folderAround(const std::string& path) const {
  const std::string* innermost = nullptr;
  for (const std::string& folder : folders_) {
    const bool isAround = path != folder && liesIn(path, folder);
    if (isAround && (!innermost || folder.size() > innermost->size())) innermost = &folder;
  }
  return innermost;
}

bool LiveChanges::isResult(const std::string& path) {
  const std::string* const around = folderAround(path);
  if (!around || !filter_.reaches(*around, path)) return false;
  FileByPath file(path, Reading::Later);
  if (file.record().isGone() || !isReached(path)) return false;
  const Match known = match(*expression_, file.record());
  if (known != Match::Unknown) return known == Match::Yes;
  file.record().askForMissing();
  askAhead();
  FileByPath now(path, Reading::Now);
  const Match read = match(*expression_, now.record());
  if (read != Match::Unknown) return read == Match::Yes;
  FileByPath anyway(path, Reading::Anyway);
  return match(*expression_, anyway.record()) == Match::Yes;
}

// Has the readers work at what comes next, while one file is waited for.
void LiveChanges::askAhead() {
  constexpr size_t kAhead = 32;
  for (size_t i = 0; i < std::min(queue_.size(), kAhead); ++i) {
    if (queue_[i].size() >= PATH_MAX) continue;
    FileByPath file(queue_[i], Reading::Later);
    if (match(*expression_, file.record()) == Match::Unknown) file.record().askForMissing();
  }
}

}  // namespace standin::metadata
