#include "file_attributes.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace standin::metadata {
namespace {

constexpr std::pair<std::string_view, FileAttribute> kNames[] = {
    {"kMDItemFSName", FileAttribute::FSName},
    {"kMDItemDisplayName", FileAttribute::DisplayName},
    {"kMDItemPath", FileAttribute::Path},
    {"kMDItemFSSize", FileAttribute::FSSize},
    {"kMDItemFSCreationDate", FileAttribute::FSCreationDate},
    {"kMDItemFSContentChangeDate", FileAttribute::FSContentChangeDate},
    {"kMDItemContentCreationDate", FileAttribute::ContentCreationDate},
    {"kMDItemContentModificationDate", FileAttribute::ContentModificationDate},
    {"kMDItemFSOwnerUserID", FileAttribute::FSOwnerUserID},
    {"kMDItemFSOwnerGroupID", FileAttribute::FSOwnerGroupID},
    {"kMDItemFSInvisible", FileAttribute::FSInvisible},
    {"kMDItemFSNodeCount", FileAttribute::FSNodeCount},
    {"kMDItemFSExists", FileAttribute::FSExists},
    {"kMDItemFSIsReadable", FileAttribute::FSIsReadable},
    {"kMDItemFSIsWriteable", FileAttribute::FSIsWriteable},
};

Date dateOf(const statx_timestamp& time) {
  constexpr double kFrom1970To2001 = 978307200;
  return {static_cast<double>(time.tv_sec) - kFrom1970To2001 + time.tv_nsec / 1e9};
}

Date creationDate(const struct statx& info) {
  // Not every file system keeps the time of birth; the oldest time that it keeps comes nearest.
  if (info.stx_mask & STATX_BTIME) return dateOf(info.stx_btime);
  const Date changed = dateOf(info.stx_mtime);
  const Date moved = dateOf(info.stx_ctime);
  return changed.seconds < moved.seconds ? changed : moved;
}

bool isFolder(const struct statx& info) {
  return S_ISDIR(info.stx_mode);
}

const char* nameIn(const std::string& path) {
  return path.c_str() + path.rfind('/') + 1;
}

// Opens the folder at an absolute path, piece by piece where the path is longer than one call takes.
int openLongPath(const std::string& path) {
  int folder = ::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
  for (size_t start = 1; start < path.size() && folder >= 0;) {
    size_t end = path.size();
    if (end - start >= PATH_MAX) end = path.rfind('/', start + PATH_MAX - 1);
    if (end == std::string::npos || end <= start) break;
    const std::string piece = path.substr(start, end - start);
    const int next = ::openat(folder, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    ::close(folder);
    folder = next;
    start = end + 1;
  }
  return folder;
}

}  // namespace

FileAttribute fileAttributeNamed(std::string_view key) {
  for (const auto& [name, attribute] : kNames) {
    if (name == key) return attribute;
  }
  return FileAttribute::None;
}

FileRecord::FileRecord(int folder, const std::string& folderPath, const char* name, const char* reach)
    : folder_(folder), folderPath_(folderPath), name_(name), reach_(reach) {}

const struct statx* FileRecord::info() {
  if (state_ == NotAsked) {
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_SYNC_AS_STAT;
    state_ = ::statx(folder_, reach_, flags, STATX_BASIC_STATS | STATX_BTIME, &info_) == 0 ? Known : Gone;
  }
  return state_ == Known ? &info_ : nullptr;
}

bool FileRecord::exists() {
  return info() != nullptr;
}

std::string_view FileRecord::path() {
  if (path_.empty()) {
    path_ = folderPath_;
    if (*name_ && path_.back() != '/') path_ += '/';
    path_ += name_;
  }
  return path_;
}

std::optional<Value> FileRecord::nodeCount() {
  const int fd = ::openat(folder_, reach_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return {};
  DIR* const folder = ::fdopendir(fd);
  if (!folder) {
    ::close(fd);
    return {};
  }
  int64_t count = 0;
  while (const dirent* const entry = ::readdir(folder)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") ++count;
  }
  ::closedir(folder);
  return count;
}

std::optional<Value> FileRecord::value(FileAttribute attribute) {
  const auto access = [&](int mode) {
    return ::faccessat(folder_, reach_, mode, AT_EACCESS | AT_SYMLINK_NOFOLLOW) == 0;
  };
  switch (attribute) {
    case FileAttribute::None:
      return {};
    case FileAttribute::FSName:
    case FileAttribute::DisplayName:
      return std::string_view(*name_ ? name_ : "/");
    case FileAttribute::Path:
      return path();
    case FileAttribute::FSInvisible:
      return *name_ == '.';
    case FileAttribute::FSExists:
      return exists();
    default:
      break;
  }
  const struct statx* const file = info();
  if (!file) return {};
  switch (attribute) {
    case FileAttribute::FSSize:
      if (isFolder(*file)) return {};
      return static_cast<int64_t>(file->stx_size);
    case FileAttribute::FSCreationDate:
    case FileAttribute::ContentCreationDate:
      return creationDate(*file);
    case FileAttribute::FSContentChangeDate:
    case FileAttribute::ContentModificationDate:
      return dateOf(file->stx_mtime);
    case FileAttribute::FSOwnerUserID:
      return int64_t{file->stx_uid};
    case FileAttribute::FSOwnerGroupID:
      return int64_t{file->stx_gid};
    case FileAttribute::FSNodeCount:
      if (!isFolder(*file)) return {};
      return nodeCount();
    case FileAttribute::FSIsReadable:
      return access(R_OK);
    case FileAttribute::FSIsWriteable:
      return access(W_OK);
    default:
      return {};
  }
}

void FileRecord::values(const AttributeKey& key, std::vector<Value>& values) {
  const auto add = [&](FileAttribute attribute) {
    if (std::optional<Value> found = value(attribute)) values.push_back(*found);
  };
  if (!key.any) {
    add(key.file);
    return;
  }
  for (auto i = static_cast<int>(kFirstFileAttribute); i <= static_cast<int>(kLastFileAttribute); ++i) {
    if (const auto attribute = static_cast<FileAttribute>(i); attribute != FileAttribute::Path)
      add(attribute);
  }
}

FileByPath::FileByPath(const std::string& path)
    : path_(path),
      folderPath_(path.substr(0, std::max<size_t>(path.rfind('/'), 1))),
      folder_(path.size() < PATH_MAX ? AT_FDCWD : openLongPath(folderPath_)),
      record_(folder_, folderPath_, nameIn(path_), folder_ == AT_FDCWD ? path_.c_str() : nameIn(path_)) {}

FileByPath::~FileByPath() {
  if (folder_ >= 0) ::close(folder_);
}

}  // namespace standin::metadata
