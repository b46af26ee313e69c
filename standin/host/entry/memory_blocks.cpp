// The entry points of memory blocks.
#include "standin/host/things/memory_blocks.h"
#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/host.h"

namespace standin::host {
namespace {

HostMemoryBlock& memoryBlockAt(ObjectHandle handle) {
  return thingAs<HostMemoryBlock>(objectThingAt(handle), "a MemoryBlock");
}

}  // namespace

namespace entry {

void* memoryBlockGetPtr(ObjectHandle handle) {
  const Gate gate(__func__);
  HostMemoryBlock& block = memoryBlockAt(handle);
  return gate.fails() || settings().nullMemoryBlockPointers ? nullptr : block.bytes.data();
}

int32_t memoryBlockGetSize(ObjectHandle handle) {
  const Gate gate(__func__);
  const HostMemoryBlock& block = memoryBlockAt(handle);
  if (gate.fails()) return 0;
  return settings().memoryBlockSize.value_or(static_cast<int32_t>(block.bytes.size()));
}

}  // namespace entry
}  // namespace standin::host
