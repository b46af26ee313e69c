#include "standin/coreservices/content/path_for_reader.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

namespace standin::metadata {

PathForReader::PathForReader(const FileLocation& file) {
  if (file.path.size() < PATH_MAX) {
    path_ = file.path;
    return;
  }
  descriptor_ =
      Descriptor(::openat(file.folder, file.pathFromFolder, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!descriptor_) return;
  path_ = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(descriptor_.get());
}

}  // namespace standin::metadata
