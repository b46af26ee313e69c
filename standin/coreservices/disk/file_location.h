// Where one file is: by its path, and by a way that leads to it however long the path is.
#pragma once

#include <sys/stat.h>

#include <string_view>

namespace standin::metadata {

// Borrows everything.
struct FileLocation {
  int folder;                  // open, or AT_FDCWD
  const char* pathFromFolder;  // to the file
  const char* name;
  std::string_view path;  // absolute, with a zero byte after it
  const struct statx& info;
};

}  // namespace standin::metadata
