// files/: one file as a source of attributes: from its path, the file system's record, its type, its text and
// what its content says of itself. It includes attributes/, content/, disk/ and media/, and
// paths.h and long_paths.h of standin/system; neither the query language nor Core Foundation.
//
// Here: the attributes of one file, read when they are asked for and not before: a search by name never
// touches the files themselves, one by size or date never their content.
#pragma once

#include <sys/stat.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "standin/coreservices/attributes/attribute_source.h"
#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/files/file_content.h"

namespace standin::metadata {

// Borrows everything that it is made of. A symbolic link is an item of its own: nothing here follows it.
class FileRecord : public AttributeSource {
 public:
  // The entry `name` of the folder at `folderPath`; `pathFromFolder` leads to it from the folder that is
  // open as `folder`. Where that is an absolute path, neither folder is used.
  FileRecord(int folder, const std::string& folderPath, const char* name, const char* pathFromFolder,
             Reading reading = Reading::Anyway);

  // Appends the attribute's values: one at the most, unless its type is an array. None: files of this kind
  // have no such attribute, or the file isn't there any more; but what its path alone tells is always known.
  // False when they aren't known, of what is in a file and isn't waited for, or where it can't be looked at.
  bool values(FileAttribute attribute, std::vector<Value>& values);

  // `*` covers all but the path and the text. The text of a file is for queries to compare, and given here
  // alone.
  bool values(const AttributeKey& key, std::vector<Value>& values) override;

  // Asks the readers for what wasn't known. Answers whether there was anything that wasn't asked for already.
  bool askForMissing();
  // Whether there is anything that a reader may still tell.
  bool awaitsReader() const { return content_ && content_->awaitsReader(); }

  // The first of the values.
  std::optional<Value> value(FileAttribute attribute);

  bool exists();  // and can be looked at
  bool isGone();
  std::string_view path();  // absolute

 private:
  const struct statx* info();
  const ContentType* namedType();
  FileContent* content();
  bool isRuledOut(Content content);
  bool goesWithoutRecord();
  std::optional<Value> nodeCount();
  std::optional<Value> valueByPath(FileAttribute attribute);
  std::optional<Value> valueByRecord(FileAttribute attribute);

  int folder_;
  const std::string& folderPath_;
  const char* name_;
  const char* pathFromFolder_;
  const Reading reading_;
  std::string path_;
  struct statx info_;
  std::optional<const ContentType*> namedType_;  // what its name promises
  std::array<std::optional<bool>, 2> ruledOut_;  // by Content
  std::unique_ptr<FileContent> content_;
  enum { NotAsked, Known, Gone, Unreachable } state_ = NotAsked;
  int error_ = 0;  // errno's, of what is unreachable
};

// A file by its absolute path, however long, which must outlive this.
class FileByPath {
 public:
  explicit FileByPath(const std::string& path, Reading reading = Reading::Anyway);
  FileByPath(const FileByPath&) = delete;
  FileByPath& operator=(const FileByPath&) = delete;
  FileRecord& record() { return record_; }

 private:
  const std::string folderPath_;  // empty, as is the next, where the path is short enough to be used whole
  const Descriptor folder_;
  FileRecord record_;
};

}  // namespace standin::metadata
