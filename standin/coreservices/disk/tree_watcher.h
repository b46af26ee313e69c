// Follows whole folder trees: tells which files and folders appeared, changed or went away, without looking
// at all of them again. Uses one inotify instance and one watch per folder.
//
// Limits, all of the system's making:
// - Changes made by other machines on network folders, and those in pseudo file systems, are not told.
// - A change made through another hard link of a file is told for that link alone.
// - What is mounted over a folder later on is not noticed; of a folder that is mounted at two places in the
//   trees, only one is followed.
// - The content of folders that may not be read, and of those whose paths are PATH_MAX or longer, isn't
//   followed; the folders themselves are. One that becomes readable is followed from then on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "standin/coreservices/disk/tree_change.h"
#include "standin/coreservices/disk/walk_filter.h"

namespace standin::metadata {

class TreeWatcher {
 public:
  // Watches every folder in `roots`, absolute paths, but for the contents of the folders in `excluded` (paths
  // as well), and of those that the filter doesn't enter. Folders that are in both are watched. What is there
  // already isn't told, and what the filter leaves out may be told. Returns when all
  // folders are watched, so that whatever is read from the disk afterwards is kept up to date by take().
  //
  // - Symbolic links are entries like others and never followed, except in the paths given here: they are
  //   resolved once, in the constructor.
  // - A root that lies in another, or is another one's folder, is told of once.
  // - A root that is missing, or no folder, is waited for: when a folder appears at its path, also with its
  //   parents, it is Touched with everything below it. When a root or one of its parents is deleted or
  //   renamed, the root is Gone, and is waited for again. (Where a parent may not be read, its entries are
  //   not waited for.)
  //
  // Throws nothing but std::bad_alloc. A watcher that can't work at all (the user has too many inotify
  // instances, the process too many files) is dead: descriptor() is -1, take() is empty, reason() says why.
  TreeWatcher(const std::vector<std::string>& roots, const std::vector<std::string>& excluded,
              const WalkFilter& filter = {});
  ~TreeWatcher();
  TreeWatcher(const TreeWatcher&) = delete;
  TreeWatcher& operator=(const TreeWatcher&) = delete;

  // To be polled, not read from: readable when take() should be called, which may then answer nothing, as
  // the folders above the roots are watched as well. Owned by the watcher, the same during its life, closed
  // on exec.
  int descriptor() const;

  // What happened since the last call, in the order of the last event of each path; one change for each path,
  // and none below one that is Gone. Never blocks.
  std::vector<TreeChange> take();

  // Why something can't be followed, for people: the watcher is dead, or the folder that it names has been
  // told as Rescan, and its content is not followed, as the system has no watches left
  // (fs.inotify.max_user_watches) or lacks memory or files; or a folder's path is too long. Empty when all is
  // well. Asking again answers what failed after that.
  std::string reason();

  // For tests: drops the events that are pending, as the system does when its queue overflows. The next
  // take() tells a Rescan for each root.
  void forceRescan();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace standin::metadata
