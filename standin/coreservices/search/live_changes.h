// The changes that the file system has told of and that are still to be looked at, and how to look at them.
//
// A change says only that something happened at a path; what counts is what is there now. So the order of
// changes makes no difference, and several of one path are one.
#pragma once

#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "standin/coreservices/disk/tree_change.h"
#include "standin/coreservices/disk/walk_filter.h"
#include "standin/coreservices/language/expression.h"
#include "standin/coreservices/language/match.h"
#include "standin/coreservices/search/result_store.h"
#include "standin/coreservices/search/time_watch.h"

namespace standin::metadata {

class LiveChanges {
 public:
  // Folders are real paths. What lies in one of them may be a result; a folder itself only where it lies in
  // another. The filter is that of the innermost of them. `times` may be null, and must outlive this; it is
  // shown every file that is looked at, and its expression is the one that counts then.
  LiveChanges(ExpressionRef expression, std::vector<std::string> folders, std::vector<std::string> excluded,
              WalkFilter filter = {}, TimeWatch* times = nullptr);

  void add(const std::vector<TreeChange>& changes);
  // What `times` says is due joins the queue.
  void addDue();
  bool empty() const { return queue_.empty(); }
  size_t size() const { return queue_.size(); }

  // The next path to be looked at.
  const std::string& next() const { return queue_.front(); }
  struct Next {
    std::string path;
    bool changed;  // else time went on, and nothing happened to the file
  };
  // Takes it from the queue. What was below a folder that went away, and everything below one that has to be
  // rescanned, joins the queue when it is the folder's turn.
  Next take(const ResultStore& known);

  // Whether the expression describes what is at the path now.
  bool isResult(const std::string& path);

 private:
  enum class Extent { Entry, KnownBelow, Rescan };  // what has to be looked at, each more than the one before
  struct Look {
    Extent extent;
    bool changed;
  };

  void add(const std::string& path, Look look);
  void addBelow(const std::string& path, Look look, const ResultStore& known);
  std::vector<std::string> matchingBelow(const std::string& path);
  const Expression& expression() const;
  bool settle(FileRecord& record, Match match);
  const std::string* folderAround(const std::string& path) const;
  bool isReached(const std::string& path);
  void askAhead();

  const ExpressionRef expression_;
  const std::vector<std::string> folders_;
  const std::vector<std::string> excluded_;
  const WalkFilter filter_;
  TimeWatch* const times_;
  std::deque<std::string> queue_;
  std::unordered_map<std::string, Look> looks_;  // at the paths in the queue
  // The last folder that was found to be where its path says, until the next changes.
  std::string reachedFolder_;
};

}  // namespace standin::metadata
