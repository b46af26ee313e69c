#include "standin/coreservices/search/live_changes.h"

#include <limits.h>

#include <algorithm>
#include <iterator>
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
  Matching(const Expression& expression, TimeWatch* times) : expression_(expression), times_(times) {}
  void entered(const std::string&, size_t) override {}
  void left() override {}
  void found(int folder, const std::string& path, const char* name) override {
    FileRecord record(folder, path, name, name, Reading::Now);
    Match matches = match(expression_, record);
    if (times_) times_->look(record);
    if (matches == Match::Unknown) {
      FileRecord anyway(folder, path, name, name, Reading::Anyway);
      matches = match(expression_, anyway);
    }
    if (matches == Match::Yes) paths.push_back(pathIn(path, name));
  }
  std::vector<std::string> paths;

 private:
  const Expression& expression_;
  TimeWatch* const times_;
};

}  // namespace

LiveChanges::LiveChanges(ExpressionRef expression, std::vector<std::string> folders,
                         std::vector<std::string> excluded, WalkFilter filter, TimeWatch* times)
    : expression_(std::move(expression)),
      folders_(std::move(folders)),
      excluded_(std::move(excluded)),
      filter_(std::move(filter)),
      times_(times) {}

const Expression& LiveChanges::expression() const {
  return times_ ? *times_->expression() : *expression_;
}

void LiveChanges::add(const std::string& path, Look look) {
  const auto [entry, isNew] = looks_.try_emplace(path, look);
  if (isNew) {
    queue_.push_back(path);
  } else {
    Look& known = entry->second;
    known = {std::max(known.extent, look.extent), known.changed || look.changed};
  }
}

void LiveChanges::add(const std::vector<TreeChange>& changes) {
  reachedFolder_.clear();
  for (const TreeChange& change : changes) {
    const bool wholeFolder = change.kind == TreeChange::Gone && change.folder;
    const Extent known = wholeFolder ? Extent::KnownBelow : Extent::Entry;
    add(change.path, {change.kind == TreeChange::Rescan ? Extent::Rescan : known, true});
  }
}

void LiveChanges::addDue() {
  if (times_->takeWhole()) {
    for (const std::string& folder : folders_) add(folder, {Extent::Rescan, false});
  }
  for (const std::string& path : times_->takeDue()) add(path, {Extent::Entry, false});
}

LiveChanges::Next LiveChanges::take(const ResultStore& known) {
  const std::string path = std::move(queue_.front());
  queue_.pop_front();
  const auto entry = looks_.find(path);
  const Look look = entry->second;
  looks_.erase(entry);
  if (look.extent >= Extent::KnownBelow) addBelow(path, look, known);
  return {path, look.changed};
}

// Where nothing but the time is new, only those are that come or go by it.
void LiveChanges::addBelow(const std::string& path, Look look, const ResultStore& known) {
  std::vector<std::string> below = known.pathsBelow(path);
  if (look.extent == Extent::Rescan) {
    std::vector<std::string> matching = matchingBelow(path);
    if (look.changed) {
      below.insert(below.end(), matching.begin(), matching.end());
    } else {
      std::ranges::sort(matching);
      std::ranges::sort(below);
      std::vector<std::string> others;
      std::ranges::set_symmetric_difference(below, matching, std::back_inserter(others));
      below = std::move(others);
    }
  }
  for (const std::string& each : below) add(each, {Extent::Entry, look.changed});
}

std::vector<std::string> LiveChanges::matchingBelow(const std::string& path) {
  const std::vector<FileId> excluded = fileIdsOf(excluded_);
  Matching matching(expression(), times_);
  const std::string* const around = folderAround(path + '/');
  for (Walk walk(path, excluded, matching, filter_, around ? *around : path); walk.step();) {
  }
  return std::move(matching.paths);
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
  if (file.record().isGone() || !isReached(path)) {
    if (times_) times_->forget(path);
    return false;
  }
  const Match known = match(expression(), file.record());
  if (known != Match::Unknown) return settle(file.record(), known);
  file.record().askForMissing();
  askAhead();
  FileByPath now(path, Reading::Now);
  const Match read = match(expression(), now.record());
  if (read != Match::Unknown) return settle(now.record(), read);
  FileByPath anyway(path, Reading::Anyway);
  return settle(anyway.record(), match(expression(), anyway.record()));
}

bool LiveChanges::settle(FileRecord& record, Match match) {
  if (times_) times_->look(record);
  return match == Match::Yes;
}

// Has the readers work at what comes next, while one file is waited for.
void LiveChanges::askAhead() {
  constexpr size_t kAhead = 32;
  for (size_t i = 0; i < std::min(queue_.size(), kAhead); ++i) {
    if (queue_[i].size() >= PATH_MAX) continue;
    FileByPath file(queue_[i], Reading::Later);
    if (match(expression(), file.record()) == Match::Unknown) file.record().askForMissing();
  }
}

}  // namespace standin::metadata
