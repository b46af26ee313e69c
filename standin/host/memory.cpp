#include "standin/host/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <unordered_map>

#include "standin/gate/gate.h"
#include "standin/host/host.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace standin::host {
namespace {

constexpr unsigned char freedByte = 0xDB;
constexpr unsigned char guardByte = 0xA5;
constexpr std::size_t guardSize = 16;
constexpr std::size_t keptAside = 8 << 20;  // bytes

struct Retired {
  unsigned char* block;
  std::size_t size;
};

struct State {
  std::deque<Retired> order;
  std::unordered_map<const void*, std::string> names;
  std::size_t size = 0;
};

State& state() {
  static State* const s = new State;
  return *s;
}

bool isAll(const unsigned char* bytes, std::size_t size, unsigned char value) {
  return std::all_of(bytes, bytes + size, [value](unsigned char byte) { return byte == value; });
}

void checkRetired(const Retired& retired) {
  ASAN_UNPOISON_MEMORY_REGION(retired.block, retired.size);
  if (!isAll(retired.block, retired.size, freedByte)) {
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
unsigned char* takeBack(std::size_t size) {
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

void* newBlock(std::size_t size) {
  unsigned char* block = running() && settings().reusesAddresses ? takeBack(size + guardSize) : nullptr;
  if (!block) block = static_cast<unsigned char*>(std::malloc(size + guardSize));
  if (!block) die(currentCall(), "the machine has no more memory");
  std::memset(block, 0, size);
  std::memset(block + size, guardByte, guardSize);
  return block;
}

void retireBlock(void* address, std::size_t size, const std::string& what) {
  auto* const block = static_cast<unsigned char*>(address);
  if (!isAll(block + size, guardSize, guardByte)) die(currentCall(), what + " was written past its end");
  std::memset(block, freedByte, size + guardSize);
  ASAN_POISON_MEMORY_REGION(block, size + guardSize);
  state().order.push_back({block, size + guardSize});
  state().names[block] = what;
  state().size += size + guardSize;
  while (state().size > keptAside) forgetOldest();
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
