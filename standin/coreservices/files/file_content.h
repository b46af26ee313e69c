// What is known of a file from more than the file system's own records: its type, its extended attributes,
// and what its content says about itself.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"
#include "standin/coreservices/disk/file_location.h"
#include "standin/coreservices/files/content_type.h"

namespace standin::metadata {

class MediaAttributes;

// Everything is read when it is first asked for, and kept.
class FileContent {
 public:
  explicit FileContent(const FileLocation& file) : file_(file) {}

  // Appends the attribute's values: none when the file has no such attribute.
  void values(FileAttribute attribute, std::vector<Value>& values);

 private:
  const ContentType* type();
  const std::string& extendedAttribute(std::optional<std::string>& kept, const char* name);
  void mediaValues(FileAttribute attribute, std::vector<Value>& values);

  FileLocation file_;
  std::optional<const ContentType*> type_;
  std::optional<std::string> origin_, referrer_, comment_;
  std::shared_ptr<const MediaAttributes> media_;
};

}  // namespace standin::metadata
