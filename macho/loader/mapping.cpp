#include "macho/loader/mapping.h"

#include <sys/mman.h>

#include <new>
#include <system_error>

#include "macho/format/format.h"

namespace macho {

Mapping::Mapping(size_t size) : size_(size) {
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  base_ = static_cast<uint8_t*>(memory);
}

Mapping::~Mapping() {
  munmap(base_, size_);
}

void Mapping::protect(size_t offset, size_t size, uint32_t protection) {
  int flags = PROT_NONE;
  if (protection & kRead) flags |= PROT_READ;
  if (protection & kWrite) flags |= PROT_WRITE;
  if (protection & kExecute) flags |= PROT_EXEC;
  if (mprotect(base_ + offset, size, flags) != 0) {
    throw std::system_error(errno, std::generic_category(), "its memory can't be protected");
  }
}

}  // namespace macho
