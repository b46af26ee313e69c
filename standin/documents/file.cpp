#include "standin/documents/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "standin/documents/limits.h"

namespace standin::documents {
namespace {

[[noreturn]] void failToRead(int error) {
  throw UnreadableError(std::string("can't be read: ") + std::strerror(error));
}

void checkKind(const struct stat& info) {
  if (!S_ISREG(info.st_mode)) throw DocumentError("is no regular file");
  if (static_cast<uint64_t>(info.st_size) > kLargestDocument) {
    throw DocumentError("is larger than " + std::to_string(kLargestDocument / kMegabyte) + " MB");
  }
}

// How a file is named that somebody has open, because its path is too long for the system.
bool isDescriptor(const std::string& path) {
  return path.starts_with("/proc/") && path.find("/fd/") != std::string::npos;
}

int openDocument(const std::string& path) {
  if (!path.starts_with('/')) throw DocumentError("isn't named by an absolute path");
  // A device may do something when it is opened, so it isn't.
  const bool follows = isDescriptor(path);
  struct stat info;
  if ((follows ? ::stat(path.c_str(), &info) : ::lstat(path.c_str(), &info)) != 0) failToRead(errno);
  checkKind(info);
  // Should another kind of file take its place now, it isn't waited for.
  const int flags = O_RDONLY | (follows ? 0 : O_NOFOLLOW) | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  int descriptor = ::open(path.c_str(), flags | O_NOATIME);
  if (descriptor < 0 && errno == EPERM) descriptor = ::open(path.c_str(), flags);
  if (descriptor < 0) failToRead(errno);
  return descriptor;
}

}  // namespace

DocumentFile::DocumentFile(const std::string& path) : descriptor_(openDocument(path)) {
  try {
    struct stat info;
    if (::fstat(descriptor_, &info) != 0) failToRead(errno);
    checkKind(info);
  } catch (...) {
    ::close(descriptor_);
    throw;
  }
}

DocumentFile::~DocumentFile() {
  ::close(descriptor_);
}

size_t readSome(int file, char* bytes, size_t size) {
  for (;;) {
    const ssize_t got = ::read(file, bytes, size);
    if (got >= 0) return static_cast<size_t>(got);
    if (errno != EINTR) failToRead(errno);
  }
}

std::string readWhole(int file, size_t limit) {
  std::string bytes;
  char buffer[65536];
  while (const size_t got = readSome(file, buffer, sizeof buffer)) {
    if (bytes.size() + got > limit) {
      throw DocumentError("is larger than " + std::to_string(limit / kMegabyte) + " MB");
    }
    bytes.append(buffer, got);
  }
  return bytes;
}

bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace standin::documents
