// store/: what readers said of files, kept for those who ask again. It includes no other room.
//
// Here: what tells one state of a file's content from every other.
#pragma once

#include <sys/stat.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace standin::metadata {

// The same as long as the file is the same, and nobody has written to it or changed what is known of it.
// Times are in nanoseconds since 1970, modulo 2^64.
struct FileState {
  uint64_t device = 0;
  uint64_t inode = 0;
  uint64_t size = 0;
  uint64_t modified = 0;
  uint64_t changed = 0;
  auto operator<=>(const FileState&) const = default;
};

FileState stateOf(const struct statx& info);

// Whether nobody can write to the file any more without changing its state, but through a mapping of it. What
// is written twice within a tick of the clock that files are dated by may look as if it had been written
// once.
bool isSettled(const FileState& file, int64_t now);  // in nanoseconds since 1970

}  // namespace standin::metadata
