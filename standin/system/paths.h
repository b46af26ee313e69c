// Paths on the file system that the stand-ins run on, as bytes. Libraries that link nothing of this folder
// use them, too: everything is in the header.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "standin/system/long_paths.h"

namespace standin {

// The absolute path with no symbolic link, no `.` and no `..` in it, however long; nothing, and errno, when
// no file is there.
inline std::optional<std::string> realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  if (real) return std::string(real.get());
  return errno == ENAMETOOLONG ? longRealPath(path) : std::nullopt;
}

// A symbolic link that leads to a folder is one.
inline bool isFolder(const std::string& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) == 0) return S_ISDIR(info.st_mode);
  return errno == ENAMETOOLONG && OpenFile(openLongPath(path, O_PATH | O_DIRECTORY));
}

// The folder that an absolute path, without a slash at its end, lies in; of "/" the path itself.
inline std::string parentPath(const std::string& path) {
  const void* const slash = ::memrchr(path.data(), '/', path.size());
  const size_t length =
      slash ? static_cast<size_t>(static_cast<const char*>(slash) - path.data()) : path.size();
  return path.substr(0, std::max<size_t>(length, 1));
}

}  // namespace standin
