#include "standin/host/machine/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>

#include "standin/gate/gate.h"
#include "standin/gate/memory.h"

#ifdef ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace standin::host {
namespace {

constexpr unsigned char kFreedByte = 0xDB;
constexpr unsigned char kGuardByte = 0xA5;
constexpr size_t kGuardSize = 16;

struct Retired {
  unsigned char* block;
  size_t size;
  BlockName name;
};

auto& retiredBlocks =
    *new std::deque<Retired>;  // the oldest first; never destroyed: blocks come until the end
size_t retiredSize = 0;

// Each byte is equal to the one before it, and the first to the value; `size` is above 0.
bool isAll(const unsigned char* bytes, size_t size, unsigned char value) {
  return bytes[0] == value && std::memcmp(bytes, bytes + 1, size - 1) == 0;
}

void checkRetired(const Retired& retired) {
  ASAN_UNPOISON_MEMORY_REGION(retired.block, retired.size);
  if (!isAll(retired.block, retired.size, kFreedByte)) {
    die("(host memory)", "a freed " + retired.name.text() + " was written to");
  }
}

void forgetOldest() {
  const Retired oldest = retiredBlocks.front();
  checkRetired(oldest);
  retiredBlocks.pop_front();
  retiredSize -= oldest.size;
  std::free(oldest.block);
}

// The block of that size that was freed last, for use anew; null when there is none.
unsigned char* takeBack(size_t size) {
  const auto found = std::find_if(retiredBlocks.rbegin(), retiredBlocks.rend(),
                                  [size](const Retired& retired) { return retired.size == size; });
  if (found == retiredBlocks.rend()) return nullptr;
  const Retired retired = *found;
  checkRetired(retired);
  retiredBlocks.erase(std::next(found).base());
  retiredSize -= size;
  return retired.block;
}

}  // namespace

void* newBlock(size_t size, bool reuseAddress) {
  unsigned char* block = reuseAddress ? takeBack(size + kGuardSize) : nullptr;
  if (!block)
    block = static_cast<unsigned char*>(takeMemory([size] { return std::malloc(size + kGuardSize); }));
  if (!block) die(currentCall(), "the machine has no more memory");
  std::memset(block, 0, size);
  std::memset(block + size, kGuardByte, kGuardSize);
  return block;
}

void retireBlock(void* address, size_t size, BlockName name) {
  auto* const block = static_cast<unsigned char*>(address);
  if (!isAll(block + size, kGuardSize, kGuardByte))
    die(currentCall(), name.text() + " was written past its end");
  std::memset(block, kFreedByte, size + kGuardSize);
  ASAN_POISON_MEMORY_REGION(block, size + kGuardSize);
  retiredBlocks.push_back({block, size + kGuardSize, name});
  retiredSize += size + kGuardSize;
  while (retiredSize > freedBytesKept()) forgetOldest();
}

std::optional<BlockName> retiredBlock(const void* address) {
  for (const Retired& retired : retiredBlocks) {
    if (retired.block == address) return retired.name;
  }
  return {};
}

void checkRetiredBlocks() {
  for (const Retired& retired : retiredBlocks) {
    checkRetired(retired);
    ASAN_POISON_MEMORY_REGION(retired.block, retired.size);
  }
}

void* unreadableAddress() {
  static void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return page;
}

}  // namespace standin::host
