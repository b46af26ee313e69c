// Paths of files: the few questions that several stand-ins ask. For libraries that link nothing of this
// folder, too: everything is in the header.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

namespace standin {

// The path without links, "." and ".."; of a relative one, from the current folder. Nothing where no file is,
// or where it can't be told: errno says why.
inline std::optional<std::string> realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.c_str(), nullptr), &::free);
  if (!real) return {};
  return real.get();
}

// Also for a link that leads to a folder.
inline bool isFolder(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Of an absolute path, without a slash at its end. That of "/" is "/".
inline std::string parentPath(const std::string& path) {
  return path.substr(0, std::max<size_t>(path.rfind('/'), 1));
}

}  // namespace standin
