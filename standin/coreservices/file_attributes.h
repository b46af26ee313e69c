// The attributes of one file, read from the file system when they are asked for and not before: a search by
// name never touches the files themselves.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>

#include "attributes.h"
#include "query_match.h"

namespace standin::metadata {

// Borrows everything that it is made of. A symbolic link is an item of its own: nothing here follows it.
class FileRecord : public AttributeSource {
 public:
  // The entry `name` of the folder at `folderPath`; `reach` leads to it from the folder that is open as
  // `folder`.
  FileRecord(int folder, const std::string& folderPath, const char* name, const char* reach);

  // Absent: files of this kind have no such attribute, or the file isn't there any more; but what its path
  // alone tells is always known.
  std::optional<Value> value(FileAttribute attribute);

  // Attributes that the file system doesn't know are missing. `*` covers all but the path.
  void values(const AttributeKey& key, std::vector<Value>& values) override;

  bool exists();

 private:
  const struct statx* info();
  std::string_view path();
  std::optional<Value> nodeCount();

  int folder_;
  const std::string& folderPath_;
  const char* name_;
  const char* reach_;
  std::string path_;
  struct statx info_;
  enum { NotAsked, Known, Gone } state_ = NotAsked;
};

// A file by its absolute path, however long, which must outlive this.
class FileByPath {
 public:
  explicit FileByPath(const std::string& path);
  ~FileByPath();
  FileByPath(const FileByPath&) = delete;
  FileByPath& operator=(const FileByPath&) = delete;
  FileRecord& record() { return record_; }

 private:
  const std::string& path_;
  std::string folderPath_;
  int folder_;  // AT_FDCWD where the path is short enough to be used whole
  FileRecord record_;
};

}  // namespace standin::metadata
