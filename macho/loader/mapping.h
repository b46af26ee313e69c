// The memory that a loaded image lies in.
#pragma once

#include <cstdint>

#include "macho/format/bytes.h"

namespace macho {

// A piece of the address space, readable and writable at first, given back when the object goes.
class Mapping {
 public:
  explicit Mapping(size_t size);  // throws std::bad_alloc when the process has no such room
  ~Mapping();
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;

  uint8_t* base() const { return base_; }
  Bytes bytes() const { return Bytes(base_, size_); }

  // `protection` in Mach-O's terms; whole pages.
  void protect(size_t offset, size_t size, uint32_t protection);

 private:
  uint8_t* base_;
  size_t size_;
};

}  // namespace macho
