// A walk through everything below a folder, in an order that depends on the names alone: a folder's entries
// by their bytes, each subfolder's content right after the subfolder.
//
// The walk holds on to folders, not to paths, so paths may be longer than the system takes in one call and a
// folder that is moved meanwhile does no harm. It doesn't follow symbolic links.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "standin/coreservices/disk/walk_filter.h"

namespace standin::metadata {

struct FileId {
  dev_t device;
  ino_t node;
  bool operator==(const FileId&) const = default;
};

// Of those of the folders that are there; links are followed.
std::vector<FileId> fileIdsOf(const std::vector<std::string>& folders);

class WalkVisitor {
 public:
  virtual ~WalkVisitor() = default;
  // A folder (the first one included) is about to be walked through; `path` is the whole path of it. The walk
  // calls left() for it when it is done; not when the walk is given up before.
  virtual void entered(const std::string& path, size_t nameLength) = 0;
  virtual void left() = 0;
  // One entry of the folder that is open as `folder` at `path`.
  virtual void found(int folder, const std::string& path, const char* name) = 0;
};

struct WalkReport {
  size_t folders = 0;            // walked through
  size_t unreadableFolders = 0;  // skipped, and noted as unseen: no permission, or an error of the disk
};

// A walk goes step by step, so that it can be paused.
class Walk {
 public:
  // `root` is an absolute path without a slash at its end (except "/"). Folders named in `excluded` are
  // entries, but what is in them isn't walked through. What vanishes during the walk is left out. Both
  // arguments that are references must outlive the walk.
  Walk(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor);
  // The same, but for what the filter leaves out, which must outlive the walk, too. `base` is the folder that
  // its limits count from: the root, or one above it.
  Walk(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor,
       const WalkFilter& filter, const std::string& base);
  ~Walk();
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

  // Shows the visitor one more entry at the most. Answers whether there is more to come.
  bool step();
  const WalkReport& report() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace standin::metadata
