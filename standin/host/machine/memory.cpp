#include "standin/host/machine/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <unordered_map>

#include "standin/gate/gate.h"

#if defined(__SANITIZE_ADDRESS__)
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
constexpr size_t kMostKept = 8 << 20;  // bytes of freed blocks

struct Retired {
  unsigned char* block;
  size_t size;
};

struct State {
  std::deque<Retired> order;
  std::unordered_map<const void*, std::string> names;
  size_t size = 0;
};

State& state() {
  static State* const s = new State;
  return *s;
}

bool isAll(const unsigned char* bytes, size_t size, unsigned char value) {
  return std::all_of(bytes, bytes + size, [value](unsigned char byte) { return byte == value; });
}

void checkRetired(const Retired& retired) {
  ASAN_UNPOISON_MEMORY_REGION(retired.block, retired.size);
  if (!isAll(retired.block, retired.size, kFreedByte)) {
    die("(host memory)", "a freed " + state().names[retired.block] + " was written to");
  }
}

void forgetOldest() {
  const Retired oldest = state().order.front();
  checkRetired(oldest);
  state().order.pop_front();
  state().size -= oldest.size;
  state().names.erase(oldest.block);
  std::free(oldest.block);
}

// The block of that size that was freed last, for use anew; null when there is none.
unsigned char* takeBack(size_t size) {
  auto& order = state().order;
  const auto found = std::find_if(order.rbegin(), order.rend(),
                                  [size](const Retired& retired) { return retired.size == size; });
  if (found == order.rend()) return nullptr;
  const Retired retired = *found;
  checkRetired(retired);
  order.erase(std::next(found).base());
  state().size -= size;
  state().names.erase(retired.block);
  return retired.block;
}

}  // namespace

void* newBlock(size_t size, bool reuseAddress) {
  unsigned char* block = reuseAddress ? takeBack(size + kGuardSize) : nullptr;
  if (!block) block = static_cast<unsigned char*>(std::malloc(size + kGuardSize));
  if (!block) die(currentCall(), "the machine has no more memory");
  std::memset(block, 0, size);
  std::memset(block + size, kGuardByte, kGuardSize);
  return block;
}

void retireBlock(void* address, size_t size, const std::string& what) {
  auto* const block = static_cast<unsigned char*>(address);
  if (!isAll(block + size, kGuardSize, kGuardByte)) die(currentCall(), what + " was written past its end");
  std::memset(block, kFreedByte, size + kGuardSize);
  ASAN_POISON_MEMORY_REGION(block, size + kGuardSize);
  state().order.push_back({block, size + kGuardSize});
  state().names[block] = what;
  state().size += size + kGuardSize;
  while (state().size > kMostKept) forgetOldest();
}

const std::string* retiredBlock(const void* address) {
  const auto found = state().names.find(address);
  return found == state().names.end() ? nullptr : &found->second;
}

void checkRetiredBlocks() {
  for (const Retired& retired : state().order) {
    checkRetired(retired);
    ASAN_POISON_MEMORY_REGION(retired.block, retired.size);
  }
}

void* unreadableAddress() {
  static void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return page;
}

}  // namespace standin::host
