// The watched folders as a tree: from a watch to its folder's path, and from a path's folder to its watch. A
// folder is stored by its name in its parent, so that one that is renamed takes all below it along.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "standin/coreservices/disk/watch_scope.h"

namespace standin::metadata {

struct WatchNode {
  static constexpr int kNoWatch = -1;

  int watch = kNoWatch;
  WatchRole role = WatchRole::Outside;
  WatchNode* parent = nullptr;
  const std::string* name = nullptr;  // its key in the parent's children
  std::map<std::string, std::unique_ptr<WatchNode>> children;
};

class WatchNodes {
 public:
  WatchNodes() = default;
  ~WatchNodes();
  WatchNodes(const WatchNodes&) = delete;
  WatchNodes& operator=(const WatchNodes&) = delete;

  // "/". Always there.
  WatchNode& top() { return top_; }
  void setTop(int watch, WatchRole role);

  // Null when there is none. What is detached is found by its watch, too, until prune().
  WatchNode* find(int watch) const;
  static WatchNode* child(const WatchNode& parent, const std::string& name);

  // Places the folder with that watch (there may be none), wherever it was before, with all below it. What
  // else was in that place is detached.
  WatchNode& put(WatchNode& parent, const std::string& name, int watch, WatchRole role);

  // Takes the folder, with all below it, out of the tree, but keeps it: it may have moved, to be put
  // elsewhere.
  void detach(WatchNode& node);
  void detachChildren(WatchNode& node);
  // Forgets what is detached; answers its watches.
  std::vector<int> prune();

  // None for what is detached.
  std::optional<std::string> path(const WatchNode& node) const;
  // Whether `node` is `ancestor` or lies below it.
  static bool isWithin(const WatchNode& node, const WatchNode& ancestor);

 private:
  using Children = decltype(WatchNode::children);

  void attach(WatchNode& parent, const std::string& name, std::unique_ptr<WatchNode> node);

  WatchNode top_;
  WatchNode detached_;      // the parent of what is detached, each under a number
  size_t detachments_ = 0;  // until prune(): the last of these numbers
  std::unordered_map<int, WatchNode*> byWatch_;
};

}  // namespace standin::metadata
