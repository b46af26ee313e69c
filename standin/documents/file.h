// Bytes of files and pipes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace standin::documents {

// A regular file, opened without following a symbolic link; nothing else is opened, and the time of last
// access is left alone where the system lets it. Throws a DocumentError.
class DocumentFile {
 public:
  explicit DocumentFile(const std::string& path);
  ~DocumentFile();
  DocumentFile(const DocumentFile&) = delete;
  DocumentFile& operator=(const DocumentFile&) = delete;
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

// Up to `size` bytes; 0 at the end. Throws a DocumentError.
size_t readSome(int file, char* bytes, size_t size);

// The file from here to its end. Throws a DocumentError when it is longer than `limit`.
std::string readWhole(int file, size_t limit);

// False when nobody reads any more.
bool writeAll(int file, std::string_view bytes);

}  // namespace standin::documents
