#include "tests/foreign/objects.h"

#include <CoreFoundation/CoreFoundation.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "standin/gate/gate.h"
#include "tests/foreign/passage.h"

// The C library's own functions, for whoever stands before it.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace foreign {

constinit int depthBehind = 0;

namespace {

// Nothing here may use operator new, which comes back through here.

// The blocks that were taken since the outermost creation began. A nested one forgets its own.
struct Blocks {
  struct Block {
    uintptr_t start;
    size_t size;
  };
  Block* blocks;
  size_t count;
  size_t room;

  void add(void* block, size_t size) {
    if (count == room) {
      room = room * 2 + 64;
      void* const grown = __libc_realloc(blocks, room * sizeof(Block));
      if (!grown) standin::die("malloc", "there is no memory for a note of it");
      blocks = static_cast<Block*>(grown);
    }
    blocks[count++] = {reinterpret_cast<uintptr_t>(block), size};
  }
};
constinit Blocks noted{};
constinit int creations = 0;  // that are under way, and count

// The objects that count, by the block that each lies in.
struct Counted {
  void* block;
  long* line;
  Counted* next;
};
constexpr size_t kChains = 1 << 14;
constinit std::array<Counted*, kChains> chains{};

Counted*& chainOf(const void* block) {
  const auto word = reinterpret_cast<uintptr_t>(block) >> 4;
  return chains[(word ^ (word >> 14)) % kChains];
}

void countBlock(uintptr_t start, long& line) {
  auto* const block = reinterpret_cast<void*>(start);
  auto* const counted = static_cast<Counted*>(__libc_malloc(sizeof(Counted)));
  if (!counted) standin::die("malloc", "there is no memory for a note of it");
  Counted*& chain = chainOf(block);
  *counted = {block, &line, chain};
  chain = counted;
  ++line;
}

void blockIsFreed(const void* block) {
  for (Counted** link = &chainOf(block); *link; link = &(*link)->next) {
    if ((*link)->block != block) continue;
    Counted* const counted = *link;
    *link = counted->next;
    --*counted->line;
    __libc_free(counted);
    return;
  }
}

void* noteTaken(void* block, size_t size) {
  if (creations > 0 && block) noted.add(block, size);
  return block;
}

// By the names of the functions that tell a type's number.
struct Kind {
  const char* name;
  const char* function;
};
constexpr Kind kKinds[] = {
#include "foreign_kinds.inc"
};
constexpr CFTypeID kTypeLimit = 1024;
constinit std::array<const char*, kTypeLimit> names{};

const char* nameOf(CFTypeID type) {
  if (type < kTypeLimit && names[type]) return names[type];
  for (const Kind& kind : kKinds) {
    const auto typeOf = reinterpret_cast<CFTypeID (*)()>(findOriginal(kind.function));
    nameKind(typeOf(), kind.name);
  }
  return type < kTypeLimit && names[type] ? names[type] : "CFType";
}

// One for each distance of a zone from GMT is kept for ever, as may be done with objects of which there are
// few.
bool isKept(const char* kind) {
  return std::strcmp(kind, "CFTimeZone") == 0;
}

}  // namespace

void nameKind(CFTypeID type, const char* name) {
  if (type < kTypeLimit) names[type] = name;
}

const char* kindOf(CFTypeRef object) {
  static constinit Original<decltype(CFGetTypeID)> typeOf;
  return nameOf(typeOf.named("CFGetTypeID")(object));
}

// The gate of this very call is open.
Creation::Creation() : counts_(standin::gateState.depth - 1 != depthBehind), first_(noted.count) {
  if (counts_) ++creations;
}

Creation::~Creation() {
  if (!counts_) return;
  --creations;
  noted.count = first_;
}

void Creation::count(CFTypeRef object) const {
  if (!counts_) return;
  const auto address = reinterpret_cast<uintptr_t>(object);
  // From the last one: a block may have been taken, given back and taken again.
  for (size_t i = noted.count; object && i-- > first_;) {
    const auto [start, size] = noted.blocks[i];
    if (address - start >= size) continue;
    const char* const kind = kindOf(object);
    if (!isKept(kind)) countBlock(start, standin::ledgerLine(kind));
    return;
  }
}

}  // namespace foreign

// Of the functions that take memory, those that an allocator of objects may use.
#define STANDS_BEFORE_LIBC extern "C" __attribute__((visibility("default")))

STANDS_BEFORE_LIBC void* malloc(size_t size) {
  return foreign::noteTaken(__libc_malloc(size), size);
}

STANDS_BEFORE_LIBC void* calloc(size_t count, size_t size) {
  return foreign::noteTaken(__libc_calloc(count, size), count * size);
}

STANDS_BEFORE_LIBC void* realloc(void* block, size_t size) {
  return foreign::noteTaken(__libc_realloc(block, size), size);
}

STANDS_BEFORE_LIBC void* memalign(size_t alignment, size_t size) {
  return foreign::noteTaken(__libc_memalign(alignment, size), size);
}

STANDS_BEFORE_LIBC void* aligned_alloc(size_t alignment, size_t size) {
  return memalign(alignment, size);
}

STANDS_BEFORE_LIBC int posix_memalign(void** block, size_t alignment, size_t size) {
  void* const taken = memalign(alignment, size);
  if (!taken) return ENOMEM;
  *block = taken;
  return 0;
}

STANDS_BEFORE_LIBC void free(void* block) {
  foreign::blockIsFreed(block);
  __libc_free(block);
}
