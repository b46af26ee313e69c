#include "standin/corefoundation/runtime/quarantine.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>

#include "standin/gate/gate.h"
#include "standin/gate/memory.h"

namespace cf {
namespace {

constexpr size_t kMaxObjects = 64 * 1024;
constexpr uintptr_t kFreedMark = 1;
constexpr int kWipe = 0xDD;

struct Kept {
  void* block;
  size_t size;
};

struct Ring {
  Kept blocks[kMaxObjects];
  size_t oldest;
  size_t count;
  size_t bytes;
};
constinit Ring ring{};

void giveBackOldest() {
  const auto [block, size] = ring.blocks[ring.oldest];
  ring.oldest = (ring.oldest + 1) % kMaxObjects;
  --ring.count;
  ring.bytes -= size;
  // The block may serve a new object next: the mark must not survive in a block that nobody owns.
  std::memset(block, 0, sizeof(Header));
  std::free(block);
}

}  // namespace

void* takeObjectMemory(size_t size) {
  // Not by calloc, which takes none of the blocks that have just been given back.
  return standin::takeMemory([size] { return std::malloc(size); });
}

void quarantine(Header* object) {
  const size_t size = malloc_usable_size(object);
  std::memset(object + 1, kWipe, size - sizeof(Header));
  object->isa = reinterpret_cast<ClassEntry*>(reinterpret_cast<uintptr_t>(object->isa) | kFreedMark);
  object->count = 0;
  while (ring.count == kMaxObjects || (ring.count > 0 && ring.bytes + size > standin::freedBytesKept()))
    giveBackOldest();
  ring.blocks[(ring.oldest + ring.count) % kMaxObjects] = {object, size};
  ++ring.count;
  ring.bytes += size;
}

const ClassEntry* freedClass(const Header* object) {
  const uintptr_t word = reinterpret_cast<uintptr_t>(object->isa);
  if ((word & kFreedMark) == 0) return nullptr;
  return findEntry(word & ~kFreedMark);
}

}  // namespace cf
