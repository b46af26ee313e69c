// Paths that may be longer than the system takes in one call (PATH_MAX), as bytes. Everything is in the
// header, as in paths.h.
#pragma once

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace standin {

// Owns a file that is open, or none.
class OpenFile {
 public:
  explicit OpenFile(int descriptor = -1) : descriptor_(descriptor) {}
  OpenFile(OpenFile&& other) noexcept : descriptor_(other.release()) {}
  OpenFile& operator=(OpenFile&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~OpenFile() {
    const int error = errno;
    if (descriptor_ >= 0) ::close(descriptor_);
    errno = error;
  }
  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }
  int release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

// What open() does, piece by piece where the path is long: answers the descriptor, which a new program
// doesn't inherit, or -1 and errno.
inline int openLongPath(const std::string& path, int flags) {
  OpenFile folder(AT_FDCWD);
  size_t start = 0;
  while (path.size() - start >= PATH_MAX) {
    const size_t end = path.rfind('/', start + PATH_MAX - 1);
    if (end == std::string::npos || end <= start) break;  // no name is that long: the system will say so
    const std::string piece = path.substr(start, end - start);
    folder = OpenFile(::openat(folder.get(), piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder) return -1;
    start = end + 1;
  }
  return ::openat(folder.get(), path.c_str() + start, flags | O_CLOEXEC);
}

// What realpath() answers, also where it can't, as the path is too long or leads to one that is. Nothing, and
// errno, where no file is there.
inline std::optional<std::string> longRealPath(const std::string& path) {
  constexpr int kMostLinks = 40;  // the system's own limit
  std::string left = path;        // to be followed from `real` on
  if (!path.starts_with('/')) {
    const std::unique_ptr<char, decltype(&std::free)> current(::getcwd(nullptr, 0), &std::free);
    if (!current) return {};
    left = std::string(current.get()) + '/' + path;
  }
  OpenFile file(::open("/", O_PATH | O_CLOEXEC));
  std::string real;
  for (int links = 0; !left.empty();) {
    const std::string name = left.substr(0, left.find('/'));
    const bool isFolder = name.size() < left.size();  // a slash follows
    left.erase(0, name.size() + 1);
    if (name.empty() || name == ".") continue;
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(file.get(), name.c_str(), target, sizeof target);
    if (length >= 0) {
      if (++links > kMostLinks) {
        errno = ELOOP;
        return {};
      }
      left = std::string(target, static_cast<size_t>(length)) + (isFolder ? '/' + left : "");
      if (left.starts_with('/')) {
        file = OpenFile(::open("/", O_PATH | O_CLOEXEC));
        real.clear();
      }
      continue;
    }
    file = OpenFile(::openat(file.get(), name.c_str(), O_PATH | O_CLOEXEC | (isFolder ? O_DIRECTORY : 0)));
    if (!file) return {};
    if (name == "..") {
      real.resize(std::min(real.size(), real.rfind('/')));
    } else {
      real += '/' + name;
    }
  }
  return real.empty() ? "/" : real;
}

}  // namespace standin
