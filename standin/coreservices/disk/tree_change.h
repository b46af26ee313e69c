// What happened in a watched folder tree.
#pragma once

#include <string>

namespace standin::metadata {

struct TreeChange {
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

}  // namespace standin::metadata
