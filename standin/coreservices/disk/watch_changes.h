// What a TreeWatcher will tell next: at most one change for each path.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "standin/coreservices/disk/tree_change.h"

namespace standin::metadata {

// "/" is the empty path here.
class WatchChanges {
 public:
  // Each comes after all those before; `folder` is what was at the path.
  void touched(const std::string& path, bool folder);
  void gone(const std::string& path, bool folder);
  void rescan(const std::string& path);

  // All of them, in order; none remain.
  std::vector<TreeChange> take();

 private:
  struct Pending {
    TreeChange::Kind kind;
    bool folder;
    bool wasFolder;  // at some time since the last take(): the receiver may know of something below it
    size_t order;
  };

  void dropBelow(const std::string& path);

  std::map<std::string, Pending> pending_;
  size_t events_ = 0;
};

}  // namespace standin::metadata
