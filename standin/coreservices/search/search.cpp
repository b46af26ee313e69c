#include "standin/coreservices/search/search.h"

#include <limits.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

// Enough for the readers to be busy, and for people to know how much is left; of some 200 bytes each.
constexpr size_t kMostWaiting = 100000;
constexpr auto kMoment = std::chrono::milliseconds(20);
constexpr size_t kStepsBetweenAnswers = 64;
constexpr int kMostChanges = 4;  // of a file while it is waited for

std::string_view nameIn(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

class Search::Collector : public WalkVisitor {
 public:
  explicit Collector(Search& search) : search_(search) {}

  void entered(const std::string& path, size_t nameLength) override {
    folder_ = std::make_shared<OpenFolder>(OpenFolder{folder_, path.substr(path.size() - nameLength)});
  }
  void left() override { folder_ = folder_->above; }

  void found(int folder, const std::string& path, const char* name) override {
    FileRecord record(folder, path, name, name, Reading::Later);
    search_.look(record, folder_, name);
  }

 private:
  Search& search_;
  std::shared_ptr<OpenFolder> folder_;
};

Search::Search(SearchRequest request, ResultStore& results, Found found)
    : request_(std::move(request)),
      results_(results),
      onFound_(std::move(found)),
      folders_(request_.themselves ? request_.folders
                                   : realFolders(request_.folders, report_.missingFolders)),
      excluded_(fileIdsOf(request_.excluded)) {
  if (!request_.themselves) chooseRoots();
  const auto isMore = [](FileAttribute attribute) { return costOf(attribute) > Cost::Name; };
  std::ranges::copy_if(request_.alsoRead, std::back_inserter(toBeKnown_), isMore);
}

// A folder in another is come to from there, unless that may be filtered: then each is walked through on its
// own, and the outer walk leaves it alone.
void Search::chooseRoots() {
  const std::vector<std::string> inner = foldersInOthers(folders_);
  if (request_.filter.isOpen()) {
    std::erase_if(folders_,
                  [&](const std::string& folder) { return std::ranges::find(inner, folder) != inner.end(); });
  } else {
    std::ranges::copy(fileIdsOf(inner), std::back_inserter(excluded_));
  }
}

Search::~Search() {
  if (asked_) contentReader().forgetQuestions();
}

// Of results, all that will be asked must be known, too.
Match Search::matchOf(FileRecord& record) {
  const Match match = standin::metadata::match(*request_.expression, record, values_);
  if (match != Match::Yes) return match;
  values_.clear();
  bool areKnown = true;
  for (const FileAttribute attribute : toBeKnown_) {
    areKnown = record.values(attribute, values_) && areKnown;
  }
  return areKnown ? match : Match::Unknown;
}

void Search::look(FileRecord& record, const std::shared_ptr<OpenFolder>& folder, const char* name) {
  ++report_.entries;
  Match match = matchOf(record);
  bool awaitsReader = record.awaitsReader();
  // A file with so long a path is read through its descriptor, of which there are few: it isn't left waiting.
  if (match == Match::Unknown && record.path().size() >= PATH_MAX) {
    const std::string path(record.path());
    FileByPath file(path, Reading::Now);
    match = matchOf(file.record());
    awaitsReader = false;
  }
  if (request_.times && match != Match::Unknown) request_.times->look(record);
  if (match == Match::No) return;
  if (match == Match::Unknown && !awaitsReader && waiting_.empty())
    return settleAnyway(folder, std::string(record.path()));
  if (match == Match::Yes && waiting_.empty()) return add(folder, name, record);
  const bool isResult = match == Match::Yes;
  if (!isResult) {
    record.askForMissing();
    asked_ = true;
    ++undecided_;
  }
  waiting_.push_back({folder, std::string(record.path()), isResult});
}

// The first of those that wait becomes a result, or none, or must wait for more.
void Search::settleFirst(std::chrono::milliseconds patience) {
  Waiting first = std::move(waiting_.front());
  waiting_.pop_front();
  // What was known of a result when it was decided may have been forgotten meanwhile; it is sorted by that.
  // And a file that changes all the time is taken as it is now.
  const bool isNow = first.isResult || first.asked > kMostChanges;
  FileByPath file(first.path, isNow ? Reading::Anyway : Reading::Later);
  if (!first.isResult) {
    const Match match = file.record().isGone() ? Match::No : matchOf(file.record());
    if (match == Match::Unknown && file.record().awaitsReader()) {
      if (file.record().askForMissing()) ++first.asked;
      waiting_.push_front(std::move(first));
      contentReader().wait(patience);
      mayBeKnown_ = false;
      return;
    }
    --undecided_;
    if (request_.times && match != Match::Unknown) request_.times->look(file.record());
    if (match == Match::No) return;
    if (match == Match::Unknown) return settleAnyway(first.folder, first.path);
  }
  add(first.folder, nameIn(first.path), file.record());
}

// Where what can't be read would decide.
void Search::settleAnyway(const std::shared_ptr<OpenFolder>& folder, const std::string& path) {
  FileByPath file(path, Reading::Anyway);
  if (request_.times) request_.times->look(file.record());
  if (matchOf(file.record()) == Match::Yes) add(folder, nameIn(path), file.record());
}

void Search::addDecided() {
  for (const Waiting& each : waiting_) {
    if (!each.isResult || found_ >= request_.maximum) continue;
    FileByPath file(each.path, Reading::Anyway);
    add(each.folder, nameIn(each.path), file.record());
  }
}

void Search::add(const std::shared_ptr<OpenFolder>& folder, std::string_view name, FileRecord& record) {
  const ResultStore::File file = results_.add(stored(*folder), name);
  ++found_;
  if (onFound_) onFound_(file, record);
}

ResultStore::Folder Search::stored(OpenFolder& folder) {
  if (folder.stored == ResultStore::kNoFolder) {
    const ResultStore::Folder above = folder.above ? stored(*folder.above) : ResultStore::kNoFolder;
    folder.stored = results_.addFolder(above, folder.name);
  }
  return folder.stored;
}

bool Search::nextFolder() {
  if (walk_) {
    report_.foldersSearched += walk_->report().folders;
    report_.unreadableFolders += walk_->report().unreadableFolders;
    walk_.reset();
  }
  if (next_ == folders_.size()) return false;
  if (request_.themselves) {
    lookAtPlace(folders_[next_++]);
    return true;
  }
  collector_ = std::make_unique<Collector>(*this);
  const std::string& folder = folders_[next_++];
  walk_ = std::make_unique<Walk>(folder, excluded_, *collector_, request_.filter, folder);
  return true;
}

void Search::lookAtPlace(const std::string& path) {
  FileByPath file(path, Reading::Later);
  if (path.starts_with('/') && file.record().exists()) {
    look(file.record(), std::make_shared<OpenFolder>(OpenFolder{nullptr, parentPath(path)}),
         path.substr(path.rfind('/') + 1).c_str());
  } else {
    ++report_.missingFolders;
  }
}

bool Search::walkOn() {
  return (walk_ && walk_->step()) || nextFolder();
}

bool Search::step() {
  if (found_ >= request_.maximum) return false;
  if (undecided_ > 0 && !walked_ && ++steps_ % kStepsBetweenAnswers == 0) {
    contentReader().wait(std::chrono::milliseconds(0));
    mayBeKnown_ = true;
  }
  const bool mustSettle =
      !waiting_.empty() && (walked_ || waiting_.size() >= kMostWaiting || waiting_.front().isResult);
  if (mustSettle || (mayBeKnown_ && !waiting_.empty())) {
    settleFirst(mustSettle ? kMoment : std::chrono::milliseconds(0));
  } else if (!walked_) {
    walked_ = !walkOn();
  }
  return found_ < request_.maximum && (!walked_ || !waiting_.empty());
}

SearchReport Search::report() const {
  SearchReport report = report_;
  report.waiting = undecided_;
  report.walked = walked_;
  if (walk_) {
    report.foldersSearched += walk_->report().folders;
    report.unreadableFolders += walk_->report().unreadableFolders;
  }
  return report;
}

}  // namespace standin::metadata
