#include "standin/coreservices/metadata/query_run.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/coreservices/metadata/held.h"
#include "standin/coreservices/metadata/scope.h"
#include "standin/gate/gate.h"
#include "standin/system/clock.h"

namespace standin::metadata {
namespace {

constexpr const char* kName = "MDQuery";

// Of the last gathering that was finished.
SearchStatistics& lastStatistics() {
  static SearchStatistics statistics;
  return statistics;
}

// Of the gathering that went on last.
SearchProgress& lastProgress() {
  static SearchProgress progress;
  return progress;
}

std::string& updateProblem() {
  static std::string problem;
  return problem;
}

// The runs that are told of changes.
std::set<QueryRun*>& runsWithUpdates() {
  static std::set<QueryRun*> runs;
  return runs;
}

QueryRun& runOf(void* info) {
  return *static_cast<QueryRun*>(info);
}

// One observer of a turn may release the query, which the next is then called with: it is held until the turn
// is over. (Callbacks of a run that is gone are never called: it makes its sources and its timer invalid.)
void perform(void* info) {
  const Inside inside(kName);
  const Held held(runOf(info).query());
  runOf(info).work();
}

void fire(CFRunLoopTimerRef, void* info) {
  perform(info);
}

void becomeReadable(CFFileDescriptorRef, CFOptionFlags, void* info) {
  const Inside inside(kName);
  runOf(info).readChanges();
}

void post(MDQueryRef query, CFStringRef name, CFDictionaryRef userInfo) {
  CFNotificationCenterPostNotification(CFNotificationCenterGetLocalCenter(), name, query, userInfo, true);
}

// Posts and releases what is told.
void postAndRelease(MDQueryRef query, CFStringRef name, CFDictionaryRef told) {
  if (!told) return post(query, name, nullptr);
  const Held held(told);
  CFRelease(told);
  post(query, name, told);
}

void stop(CFRunLoopTimerRef& timer) {
  if (!timer) return;
  CFRunLoopTimerInvalidate(timer);
  CFRelease(std::exchange(timer, nullptr));
}

double secondsOf(size_t milliseconds) {
  return static_cast<double>(milliseconds) / 1000;
}

}  // namespace

Date currentTime() {
  return {CFAbsoluteTimeGetCurrent() + timeSkipped()};
}

void stop(std::unique_ptr<QueryRun> run) {
  const MDQueryRef query = run->query();
  const bool found = run->takeLast();
  run.reset();
  if (found) post(query, kMDQueryProgressNotification, nullptr);
}

QueryRun::QueryRun(MDQueryRef query, QueryState& state, const ExpressionRef& asked, bool wantsUpdates)
    : query_(query), state_(state) {
  const std::vector<std::string> folders = foldersOf(state.scope, state.outerScopes);
  const std::vector<std::string>& excluded = excludedFolders();
  if (wantsUpdates) watch(asked, folders, excluded);
  SearchRequest request{state.expression, folders, excluded};
  request.alsoRead = state.results.attributes();
  request.themselves = looksAtScopesAlone();
  request.filter = walkFilter();
  request.times = times_.get();
  if (state.maximum > 0) request.maximum = static_cast<size_t>(state.maximum);
  search_ = std::make_unique<Search>(std::move(request), state.results.store(),
                                     [&results = state.results](ResultStore::File file, FileRecord& record) {
                                       results.gathered(file, record);
                                     });
  CFRunLoopSourceContext context{};
  context.info = this;
  context.perform = perform;
  source_ = CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source_, kCFRunLoopDefaultMode);
  CFRunLoopSourceSignal(source_);
}

QueryRun::~QueryRun() {
  runsWithUpdates().erase(this);
  stop(timer_);
  stop(momentTimer_);
  if (descriptor_) {
    CFFileDescriptorInvalidate(descriptor_);
    CFRelease(descriptor_);
  }
  CFRunLoopSourceInvalidate(source_);
  CFRelease(source_);
}

void QueryRun::watch(const ExpressionRef& asked, const std::vector<std::string>& folders,
                     const std::vector<std::string>& excluded) {
  std::vector<std::string> roots;
  for (const std::string& folder : folders) {
    if (folder.starts_with('/')) roots.push_back(intendedPath(folder));
  }
  watcher_ = std::make_unique<TreeWatcher>(roots, excluded, walkFilter());
  times_ = TimeWatch::of(asked, currentTime());
  changes_ = std::make_unique<LiveChanges>(state_.expression, roots, excluded, walkFilter(), times_.get());
  updateProblem() = watcher_->reason();
  if (watcher_->descriptor() < 0) return;
  runsWithUpdates().insert(this);
  CFFileDescriptorContext context{};
  context.info = this;
  descriptor_ =
      CFFileDescriptorCreate(kCFAllocatorDefault, watcher_->descriptor(), false, becomeReadable, &context);
  CFFileDescriptorEnableCallBacks(descriptor_, kCFFileDescriptorReadCallBack);
  const CFRunLoopSourceRef source = CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, descriptor_, 0);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopDefaultMode);
  CFRelease(source);
}

void QueryRun::work() {
  if (isGathering()) {
    gatherBatch();
  } else {
    updateBatch();
  }
}

// Gathering

// Goes on searching until there is a batch: so many results, but one at least, or those that were found in so
// much time. Answers whether there is more to come.
bool QueryRun::searchOn(size_t maximum, double seconds) {
  constexpr unsigned kStepsBetweenLooksAtTheClock = 16;
  const size_t enough = search_->found() + std::max<size_t>(maximum, 1);
  const double end = clockTime() + seconds;
  for (unsigned steps = 1; search_->step(); ++steps) {
    if (search_->found() >= enough) return true;
    if (steps % kStepsBetweenLooksAtTheClock == 0 && clockTime() >= end) return true;
  }
  return false;
}

void QueryRun::searchBatch() {
  const MDQueryBatchingParams& limits = state_.batches;
  const bool first = std::exchange(firstBatch_, false);
  const bool more = searchOn(first ? limits.first_max_num : limits.progress_max_num,
                             secondsOf(first ? limits.first_max_ms : limits.progress_max_ms));
  const SearchReport report = search_->report();
  lastProgress() = {report.entries, report.waiting, report.walked};
  if (more) return;
  lastStatistics() = {report.foldersSearched, report.unreadableFolders, report.missingFolders};
  search_.reset();
}

// While updates are disabled, results come in and are held back. When gathering is finished is told in a turn
// of its own: it says nothing about the results.
void QueryRun::gatherBatch() {
  const bool disabled = state_.updatesDisabled > 0;
  const size_t before = state_.results.size();
  state_.results.holdBack(disabled);
  if (search_) searchBatch();
  if (!disabled) state_.results.settle();
  const bool found = state_.results.size() > before;
  if (isHeldUp()) return;
  if (!search_ && !found) return finishGathering();
  CFRunLoopSourceSignal(source_);
  const ResultChanges changes = lookAtKnown();
  if (changes.size() > 0) {
    postAndRelease(query_, kMDQueryProgressNotification, state_.results.update(changes));
  } else if (found) {
    post(query_, kMDQueryProgressNotification, nullptr);
  }
}

void QueryRun::finishGathering() {
  gathering_ = false;
  state_.gathered = true;
  touchedWhileGathering_ = {};
  if (descriptor_) {
    schedule();
    awaitMoment();
  } else {
    CFRunLoopSourceInvalidate(source_);
  }
  post(query_, kMDQueryDidFinishNotification, nullptr);
}

bool QueryRun::takeLast() {
  if (!gathering_) return false;
  const size_t before = state_.results.size();
  if (search_) search_->addDecided();
  state_.results.settle();
  return state_.results.size() > before;
}

// The changes of results that are gathered already. When gathering is over, all changes are looked at again:
// a file may have been read before it changed, and added after.
ResultChanges QueryRun::lookAtKnown() {
  ResultChanges changes;
  if (state_.updatesDisabled > 0) return changes;
  for (const std::string& path : std::exchange(touchedWhileGathering_, {})) {
    const ResultStore::File file = state_.results.store().find(path);
    if (file == ResultStore::kNoFile) continue;
    (changes_->isResult(path) ? changes.changed : changes.removed).push_back(file);
  }
  return changes;
}

// Updates

void QueryRun::readChanges() {
  const std::vector<TreeChange> told = watcher_->take();
  CFFileDescriptorEnableCallBacks(descriptor_, kCFFileDescriptorReadCallBack);
  if (std::string problem = watcher_->reason(); !problem.empty()) {
    updateProblem() = std::move(problem);
  }
  changes_->add(told);
  if (isGathering()) {
    for (const TreeChange& change : told) touchedWhileGathering_.insert(change.path);
  } else {
    schedule();
  }
}

void QueryRun::forceRescan() {
  watcher_->forceRescan();
  readChanges();
}

void QueryRun::updatesEnabled() {
  if (isGathering() || descriptor_) CFRunLoopSourceSignal(source_);
}

// Changes wait for a batch's time to be over, or for as many as make a batch.
void QueryRun::schedule() {
  if (changes_->empty() || state_.updatesDisabled > 0) return;
  const MDQueryBatchingParams& limits = state_.batches;
  if (limits.update_max_ms == 0 || changes_->size() >= limits.update_max_num) {
    CFRunLoopSourceSignal(source_);
  } else if (!timer_) {
    timer_ = makeTimer(secondsOf(limits.update_max_ms));
  }
}

// Files whose moments come within the time of a batch are looked at together.
void QueryRun::awaitMoment() {
  if (!times_ || times_->next() == TimeWatch::kNever) return;
  const double left = times_->next() - currentTime().seconds;
  momentTimer_ = makeTimer(std::max(left, secondsOf(state_.batches.update_max_ms)));
}

CFRunLoopTimerRef QueryRun::makeTimer(double seconds) {
  CFRunLoopTimerContext context{};
  context.info = this;
  const CFRunLoopTimerRef timer = CFRunLoopTimerCreate(
      kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + seconds, 0, 0, 0, fire, &context);
  CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopDefaultMode);
  return timer;
}

// Looks at changes until there are as many as make a batch, or for a moment, as some take a reader. A path
// that has to be looked at again, because of what became of a folder above it meanwhile, belongs to the next
// batch: in this one it has been counted.
ResultChanges QueryRun::lookAtNext() {
  ResultChanges changes;
  std::unordered_set<std::string> looked;
  const size_t enough = std::max<size_t>(state_.batches.update_max_num, 1);
  constexpr double kMoment = 0.2;  // seconds
  const double end = clockTime() + kMoment;
  const ResultStore& store = state_.results.store();
  while (!changes_->empty() && changes.size() < enough && clockTime() < end &&
         looked.insert(changes_->next()).second) {
    const auto [path, changed] = changes_->take(store);
    const ResultStore::File file = store.find(path);
    const bool known = file != ResultStore::kNoFile;
    if (changes_->isResult(path)) {
      if (known && changed) changes.changed.push_back(file);
      if (!known) changes.added.push_back(path);
    } else if (known) {
      changes.removed.push_back(file);
    }
  }
  if (state_.maximum > 0) {
    const size_t staying = state_.results.size() - changes.removed.size();
    const auto maximum = static_cast<size_t>(state_.maximum);
    const size_t room = maximum - std::min(staying, maximum);
    if (changes.added.size() > room) changes.added.resize(room);
  }
  return changes;
}

void QueryRun::updateBatch() {
  stop(timer_);
  stop(momentTimer_);
  if (state_.updatesDisabled > 0) return;
  if (times_) {
    times_->turnTo(currentTime());
    changes_->addDue();
  }
  const ResultChanges changes = lookAtNext();
  awaitMoment();
  if (!changes_->empty()) CFRunLoopSourceSignal(source_);
  if (changes.size() == 0) return;
  const CFDictionaryRef told = state_.results.update(changes);
  state_.results.store().compact();
  postAndRelease(query_, kMDQueryDidUpdateNotification, told);
}

}  // namespace standin::metadata

standin::SearchStatistics standin::lastSearch() {
  return metadata::lastStatistics();
}

standin::SearchProgress standin::currentSearch() {
  return metadata::lastProgress();
}

std::string standin::liveUpdateProblem() {
  return metadata::updateProblem();
}

void standin::forceRescan() {
  for (metadata::QueryRun* const run : metadata::runsWithUpdates()) run->forceRescan();
}
