// A query at work: it gathers results in batches, and then keeps them up to date if that is wanted.
//
// All of it happens in turns of the run loop of the thread that executed the query, and nothing while that
// loop doesn't run. When the thread ends, so do the turns: the query keeps what it has. Each turn ends with
// at most one notification, and whatever its observers do to the query, its run is not touched afterwards.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "standin/coreservices/disk/tree_watcher.h"
#include "standin/coreservices/metadata/query_state.h"
#include "standin/coreservices/search/live_changes.h"
#include "standin/coreservices/search/search.h"
#include "standin/coreservices/search/time_watch.h"
#include "standin/coreservices/services.h"

namespace standin::metadata {

class QueryRun {
 public:
  // Begins to watch at once when updates are wanted, before anything is read. The query owns the run and the
  // state, which the run uses. The state's expression has the times that are fixed when a query starts; the
  // one that was asked for counts from then on.
  QueryRun(MDQueryRef query, QueryState& state, const ExpressionRef& asked, bool wantsUpdates);
  ~QueryRun();
  QueryRun(const QueryRun&) = delete;
  QueryRun& operator=(const QueryRun&) = delete;

  MDQueryRef query() const { return query_; }
  bool isGathering() const { return gathering_; }
  // Everything has been found, and results wait for updates to be enabled.
  bool isHeldUp() const { return !search_ && state_.updatesDisabled > 0 && state_.results.holdsBack(); }
  // What has come in joins the results, also while updates are disabled, and no more comes in. Answers
  // whether there are new ones.
  bool takeLast();
  // Results and changes that waited are told in the next turn.
  void updatesEnabled();
  void forceRescan();  // where updates are wanted

  // Turns of the run loop
  void work();
  void readChanges();

 private:
  void watch(const ExpressionRef& asked, const std::vector<std::string>& folders,
             const std::vector<std::string>& excluded);
  void gatherBatch();
  bool searchOn(size_t maximum, double seconds);
  void searchBatch();
  void finishGathering();
  void updateBatch();
  ResultChanges lookAtKnown();
  ResultChanges lookAtNext();
  void schedule();
  void awaitMoment();
  CFRunLoopTimerRef makeTimer(double seconds);

  const MDQueryRef query_;  // not retained: it owns this
  QueryState& state_;
  CFRunLoopSourceRef source_ = nullptr;  // signalled when there is work
  bool gathering_ = true;                // until it is told to be finished
  std::unique_ptr<TimeWatch> times_;     // where updates are wanted of what is relative to time
  std::unique_ptr<Search> search_;       // until it has found everything
  bool firstBatch_ = true;

  std::unique_ptr<TreeWatcher> watcher_;  // where updates are wanted
  std::unique_ptr<LiveChanges> changes_;
  std::set<std::string> touchedWhileGathering_;  // paths, since the last batch
  CFFileDescriptorRef descriptor_ = nullptr;
  CFRunLoopTimerRef timer_ = nullptr;        // while changes wait for their batch to be over
  CFRunLoopTimerRef momentTimer_ = nullptr;  // until a file comes to match, or stops
};

// The system's time, and ahead of it as far as the run loops' clock was set ahead.
Date currentTime();

// Ends a run before its time. Results that have come in and were not told are told now: what observers do
// then they do inside of this call. The caller holds the query.
void stop(std::unique_ptr<QueryRun> run);

}  // namespace standin::metadata
