#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/objects.h"
#include "standin/host/own_classes.h"

namespace standin::host {
namespace {

class HostMemoryBlock : public HostObject {
 public:
  using HostObject::HostObject;
  std::vector<char> bytes;
};

HostMemoryBlock& memoryBlockAt(ObjectHandle handle, const char* call) {
  Counted& thing = objectThingAt(handle);
  auto* const block = dynamic_cast<HostMemoryBlock*>(&thing);
  if (!block) die(call, "the " + thing.describe() + " was passed where a MemoryBlock is expected");
  return *block;
}

}  // namespace

HostObject* makeMemoryBlock(const Class& cls, Side owner) {
  auto* const block = new HostMemoryBlock(cls, owner);
  block->bytes.reserve(1);  // an empty one has an address too
  return block;
}

Value memoryBlock(std::string_view bytes) {
  const Value made = newInstance("MemoryBlock");
  static_cast<HostMemoryBlock&>(instanceIn(made, "bytes for")).bytes.assign(bytes.begin(), bytes.end());
  return made;
}

namespace entry {

void* memoryBlockGetPtr(ObjectHandle handle) {
  const Gate gate("memoryBlockGetPtr");
  HostMemoryBlock& block = memoryBlockAt(handle, "memoryBlockGetPtr");
  return gate.fails() || settings().nullMemoryBlockPointers ? nullptr : block.bytes.data();
}

int32_t memoryBlockGetSize(ObjectHandle handle) {
  const Gate gate("memoryBlockGetSize");
  const HostMemoryBlock& block = memoryBlockAt(handle, "memoryBlockGetSize");
  if (gate.fails()) return 0;
  return settings().memoryBlockSize.value_or(static_cast<int32_t>(block.bytes.size()));
}

}  // namespace entry
}  // namespace standin::host
