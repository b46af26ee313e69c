// Objects as the second library lays them out: each lies in the middle of its block of memory, which is given
// back at once. So what was freed can't be told from anything else.
#include <cstdlib>
#include <cstring>

#include "standin/corefoundation/runtime/quarantine.h"

namespace cf {
namespace {

constexpr size_t kInFront = 16;  // bytes; keeps objects where an address may be divided by 16

}  // namespace

void* takeObjectMemory(size_t size) {
  char* const block = static_cast<char*>(std::malloc(kInFront + size));
  return block ? block + kInFront : nullptr;
}

void quarantine(Header* object) {
  // The next owner of the block must not look like this one.
  std::memset(static_cast<void*>(object), 0, sizeof(CFRuntimeBase));
  std::free(reinterpret_cast<char*>(object) - kInFront);
}

const ClassEntry* freedClass(const Header*) {
  return nullptr;
}

}  // namespace cf
