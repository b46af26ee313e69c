// Owns a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace standin::metadata {

// Empty when the number is negative, as that of a file that couldn't be opened.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() { close(); }
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  void close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }

 private:
  int fd_;
};

}  // namespace standin::metadata
