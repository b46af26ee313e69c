// What a TreeWatcher follows: the folders that were named, without the excluded ones, and the folders above
// them, where they may vanish and appear again.
//
// Paths are absolute, without links, and without a slash at their end: the first folder, "/", is the empty
// path.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "standin/coreservices/disk/walk_filter.h"

namespace standin::metadata {

enum class WatchRole {
  Outside,  // not followed
  Passage,  // a root lies below it: only the entry that leads there matters
  Inside    // a root or in one, and not excluded: every entry may matter
};

class WatchScope {
 public:
  // Paths as people name them. Relative ones are left out.
  WatchScope(const std::vector<std::string>& roots, const std::vector<std::string>& excluded,
             const WalkFilter& filter = {});

  // Sorted, without those that lie in others, unless a filter may keep others from leading to them.
  const std::set<std::string>& roots() const { return roots_; }
  bool isRoot(const std::string& path) const { return roots_.count(path) != 0; }
  // Whether the path is a root or above one.
  bool leadsToRoot(const std::string& path) const { return isRoot(path) || hasRootBelow(path); }
  // The role of a folder that lies in one of the role `parent`.
  WatchRole roleOf(const std::string& path, WatchRole parent) const;
  // The roots at the path and below it.
  std::vector<std::string> rootsWithin(const std::string& path) const;
  // The names of the entries of the folder that lead to roots.
  std::set<std::string> namesTowardsRoots(const std::string& path) const;

 private:
  bool hasRootBelow(const std::string& path) const;
  bool isCovered(const std::string& root, const std::set<std::string>& by) const;

  bool isEntered(const std::string& path) const;

  std::set<std::string> excluded_;
  WalkFilter filter_;
  std::set<std::string> roots_;
};

}  // namespace standin::metadata
