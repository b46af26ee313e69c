#include "standin/coreservices/files/file_attributes.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "standin/coreservices/attributes/dates.h"
#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/disk/unseen.h"
#include "standin/coreservices/media/media_table.h"
#include "standin/system/long_paths.h"
#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

Date dateOf(const statx_timestamp& time) {
  return {static_cast<double>(time.tv_sec - kFrom1970To2001) + time.tv_nsec / 1e9};
}

Date creationDate(const struct statx& info) {
  // Not every file system keeps the time of birth; the older of the others comes nearest.
  if (info.stx_mask & STATX_BTIME) return dateOf(info.stx_btime);
  const Date changed = dateOf(info.stx_mtime);
  const Date moved = dateOf(info.stx_ctime);
  return changed.seconds < moved.seconds ? changed : moved;
}

// Making and writing a file count as reading it: only a later time means that it was used.
std::optional<Value> lastUsedDate(const struct statx& info) {
  const Date used = dateOf(info.stx_atime);
  if (used.seconds <= dateOf(info.stx_mtime).seconds) return {};
  return used;
}

bool isFolder(const struct statx& info) {
  return S_ISDIR(info.stx_mode);
}

const char* nameIn(const std::string& path) {
  const void* const slash = ::memrchr(path.c_str(), '/', path.size());
  return slash ? static_cast<const char*>(slash) + 1 : path.c_str();
}

// Longer than the system takes in one call.
bool isLong(const std::string& path) {
  return path.size() >= PATH_MAX;
}

}  // namespace

FileRecord::FileRecord(int folder, const std::string& folderPath, const char* name,
                       const char* pathFromFolder, Reading reading)
    : folder_(folder),
      folderPath_(folderPath),
      name_(name),
      pathFromFolder_(pathFromFolder),
      reading_(reading) {}

const struct statx* FileRecord::info() {
  if (state_ == NotAsked) {
    const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_SYNC_AS_STAT;
    const int failed = ::statx(folder_, pathFromFolder_, flags, STATX_BASIC_STATS | STATX_BTIME, &info_);
    error_ = failed ? errno : 0;
    state_ = !failed ? Known : meansGone(error_) ? Gone : Unreachable;
  }
  return state_ == Known ? &info_ : nullptr;
}

// Where there is none, that is so because there is no file, or it isn't known, or counts as nothing.
bool FileRecord::goesWithoutRecord() {
  if (state_ != Unreachable) return true;
  if (reading_ != Reading::Anyway) return false;
  noteUnseenFile(path(), std::string("can't be looked at: ") + std::strerror(error_));
  return true;
}

bool FileRecord::exists() {
  return info() != nullptr;
}

bool FileRecord::isGone() {
  info();
  return state_ == Gone;
}

std::string_view FileRecord::path() {
  if (*pathFromFolder_ == '/') return pathFromFolder_;
  if (path_.empty()) {
    path_.reserve(folderPath_.size() + 1 + std::strlen(name_));
    path_ = folderPath_;
    if (*name_ && path_.back() != '/') path_ += '/';
    path_ += name_;
  }
  return path_;
}

const ContentType* FileRecord::namedType() {
  if (!namedType_) namedType_ = contentTypeOfName(name_, Node::File);
  return *namedType_;
}

FileContent* FileRecord::content() {
  if (!content_ && info()) {
    content_ = std::make_unique<FileContent>(FileLocation{folder_, pathFromFolder_, name_, path(), info_},
                                             namedType(), reading_);
  }
  return content_.get();
}

bool FileRecord::isRuledOut(Content content) {
  if (state_ != NotAsked) return false;
  std::optional<bool>& isRuledOut = ruledOut_[static_cast<size_t>(content)];
  if (!isRuledOut) isRuledOut = metadata::isRuledOut(content, namedType(), path());
  return *isRuledOut;
}

std::optional<Value> FileRecord::nodeCount() {
  const int fd = ::openat(folder_, pathFromFolder_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) {
    if (!meansGone(errno)) noteUnseenFolder(path(), errno);
    return {};
  }
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

// What the path alone tells, and whether there is a file at all.
std::optional<Value> FileRecord::valueByPath(FileAttribute attribute) {
  switch (attribute) {
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
      return {};
  }
}

std::optional<Value> FileRecord::valueByRecord(FileAttribute attribute) {
  const struct statx* const file = info();
  if (!file) return {};
  const auto access = [&](int mode) {
    return ::faccessat(folder_, pathFromFolder_, mode, AT_EACCESS | AT_SYMLINK_NOFOLLOW) == 0;
  };
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
    case FileAttribute::AttributeChangeDate:
      return dateOf(file->stx_ctime);
    case FileAttribute::DateAdded:
      if (!(file->stx_mask & STATX_BTIME)) return {};
      return dateOf(file->stx_btime);
    case FileAttribute::LastUsedDate:
      return lastUsedDate(*file);
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
    case FileAttribute::FSHasCustomIcon:
    case FileAttribute::FSIsExtensionHidden:
    case FileAttribute::FSIsStationery:
      return false;  // Linux has nothing of the kind
    case FileAttribute::FSLabel:
      return int64_t{0};
    default:
      return {};
  }
}

bool FileRecord::values(FileAttribute attribute, std::vector<Value>& values) {
  const bool isDate = attribute == FileAttribute::ContentCreationDate;
  if (isMediaAttribute(attribute) && !isDate && isRuledOut(Content::Tags)) return true;
  const size_t before = values.size();
  const auto addContent = [&] {
    FileContent* const file = content();
    return file ? file->values(attribute, values) : goesWithoutRecord();
  };
  // The content knows better than the file when it was made: a copy is younger than the picture in it.
  if (isDate) {
    const bool isKnown = addContent();
    if (!isKnown || values.size() > before) return isKnown;
  }
  std::optional<Value> value = valueByPath(attribute);
  if (!value) value = valueByRecord(attribute);
  if (value) values.push_back(*value);
  return value || attribute == FileAttribute::None || addContent();
}

std::optional<Value> FileRecord::value(FileAttribute attribute) {
  std::vector<Value> found;
  values(attribute, found);
  if (found.empty()) return {};
  return found.front();
}

bool FileRecord::values(const AttributeKey& key, std::vector<Value>& values) {
  if (key.file == FileAttribute::TextContent) {
    if (isRuledOut(Content::Text)) return true;
    FileContent* const file = content();
    return file ? file->text(values) : goesWithoutRecord();
  }
  if (!key.any) return this->values(key.file, values);
  bool areAll = true;
  for (const AttributeInfo& info : schema()) {
    if (info.attribute != FileAttribute::Path) areAll = this->values(info.attribute, values) && areAll;
  }
  return areAll;
}

bool FileRecord::askForMissing() {
  return content_ && content_->askForMissing();
}

FileByPath::FileByPath(const std::string& path, Reading reading)
    : folderPath_(isLong(path) ? parentPath(path) : std::string()),
      folder_(isLong(path) ? openLongPath(folderPath_, O_PATH | O_DIRECTORY) : -1),
      record_(isLong(path) ? folder_.get() : AT_FDCWD, folderPath_, nameIn(path),
              isLong(path) ? nameIn(path) : path.c_str(), reading) {}

}  // namespace standin::metadata
