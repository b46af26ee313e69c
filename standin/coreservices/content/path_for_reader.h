// The path by which a program that runs beside this process reaches a file.
#pragma once

#include <string>

#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/disk/file_location.h"

namespace standin::metadata {

// A path that is longer than the system takes in one call leads through the descriptor of the open file,
// which must stay open until the file is read.
class PathForReader {
 public:
  explicit PathForReader(const FileLocation& file);

  const std::string& get() const { return path_; }  // empty when the file can't be opened
  bool isDescriptor() const { return static_cast<bool>(descriptor_); }

 private:
  std::string path_;
  Descriptor descriptor_;
};

}  // namespace standin::metadata
