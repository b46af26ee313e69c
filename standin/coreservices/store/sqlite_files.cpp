// SQLite's library asks for the status of a file by three functions, which a program may replace. Their
// record is that of a program with times of 32 bits, as the library is one: so is this file.
#undef _TIME_BITS

#include "standin/coreservices/store/sqlite_files.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <limits>

namespace standin::metadata {
namespace {

static_assert(sizeof(time_t) == 4 && sizeof(off_t) == 8, "not the library's record");

// SQLite does nothing with times that matters here: the nearest that there is will do.
time_t nearest(const statx_timestamp& time) {
  using Limits = std::numeric_limits<time_t>;
  return static_cast<time_t>(std::clamp<int64_t>(time.tv_sec, Limits::min(), Limits::max()));
}

int statusOf(int folder, const char* path, int flags, struct stat* status) {
  struct statx file;
  if (::statx(folder, path, flags, STATX_BASIC_STATS, &file) != 0) return -1;
  *status = {};
  status->st_dev = makedev(file.stx_dev_major, file.stx_dev_minor);
  status->st_ino = file.stx_ino;
  status->st_mode = file.stx_mode;
  status->st_nlink = file.stx_nlink;
  status->st_uid = file.stx_uid;
  status->st_gid = file.stx_gid;
  status->st_size = static_cast<off_t>(file.stx_size);
  status->st_blksize = static_cast<blksize_t>(file.stx_blksize);
  status->st_blocks = static_cast<blkcnt_t>(file.stx_blocks);
  status->st_atime = nearest(file.stx_atime);
  status->st_mtime = nearest(file.stx_mtime);
  status->st_ctime = nearest(file.stx_ctime);
  return 0;
}

int statusOfPath(const char* path, struct stat* status) {
  return statusOf(AT_FDCWD, path, 0, status);
}

int statusOfLink(const char* path, struct stat* status) {
  return statusOf(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, status);
}

int statusOfDescriptor(int descriptor, struct stat* status) {
  return statusOf(descriptor, "", AT_EMPTY_PATH, status);
}

template <class Function>
void replace(sqlite3_vfs* system, const char* name, Function* function) {
  system->xSetSystemCall(system, name, reinterpret_cast<sqlite3_syscall_ptr>(function));
}

}  // namespace

void letSQLiteUseFilesOfAnyDate() {
  sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  if (!system || system->iVersion < 3) return;
  replace(system, "stat", statusOfPath);
  replace(system, "lstat", statusOfLink);
  replace(system, "fstat", statusOfDescriptor);
}

}  // namespace standin::metadata
