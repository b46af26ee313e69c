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

namespace standin::metadata {

class TreeWatcher {
 public:
  struct Change {
    enum Kind {
      // The entry appeared (also: was renamed or moved to this path) or changed in any way: content, size,
      // dates, permissions, extended attributes; a folder also when an entry appeared in it or left it. Look
      // at the disk for what is there now: it may be gone again. A folder that appeared is followed by a
      // Touched for everything below it.
      Touched,
      // Deleted, renamed away or moved out, and with a folder everything below it.
      Gone,
      // Events were lost, or a folder was replaced by something else since the last call: what is known of
      // the path and of everything below it is out of date. Forget that, then look at the path itself, which
      // may be missing, and, if it's a folder, at everything below.
      Rescan
    };
    Kind kind;
    std::string path;  // bytes; the root's real path, then the names below it
    // What was at the path when it happened; the disk may say something else by now. Of a Gone: whether a
    // folder had been there at some time since the last call.
    bool folder;
  };

  // Watches every folder in `roots`, absolute paths, but for the contents of the folders in `excluded` (paths
  // as well). Folders that are in both are watched. What is there already isn't told. Returns when all
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
  TreeWatcher(const std::vector<std::string>& roots, const std::vector<std::string>& excluded);
  ~TreeWatcher();
  TreeWatcher(const TreeWatcher&) = delete;
  TreeWatcher& operator=(const TreeWatcher&) = delete;

  // To be polled, not read from: readable when take() should be called, which may then answer nothing, as
  // the folders above the roots are watched as well. Owned by the watcher, the same during its life, closed
  // on exec.
  int descriptor() const;

  // What happened since the last call, in the order of the last event of each path; one change for each path,
  // and none below one that is Gone. Never blocks.
  std::vector<Change> take();

  // Why something can't be followed, for people: the watcher is dead, or the folder that it names has been
  // told as Rescan, and its content is not followed, as the system has no watches left
  // (fs.inotify.max_user_watches) or lacks memory or files. Empty when all is well. Asking again answers what
  // failed after that.
  std::string reason();

  // For tests: loses the events that are pending, as an overflow of the system's queue does. The next take()
  // tells a Rescan for each root.
  void loseEvents();

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace standin::metadata
