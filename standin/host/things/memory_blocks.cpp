#include "standin/host/things/memory_blocks.h"

#include "standin/host/host.h"

namespace standin::host {

HostMemoryBlock::HostMemoryBlock(const Class& classOfIt, Side owner) : HostObject(classOfIt, owner) {
  bytes.reserve(1);  // an empty one has an address too
}

Value memoryBlock(std::string_view bytes) {
  const Value made = newInstance("MemoryBlock");
  instanceAs<HostMemoryBlock>(made, "bytes for", "a MemoryBlock").bytes.assign(bytes.begin(), bytes.end());
  return made;
}

}  // namespace standin::host
