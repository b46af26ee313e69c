// Classes that other libraries register, and their objects.
#include "standin/corefoundation/CFRuntime.h"
#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/object.h"

namespace cf {
namespace {

constinit CFTypeID nextRegisteredType = kFirstRegisteredType;

}  // namespace
}  // namespace cf

using standin::Gate;

CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* cls) {
  const Gate gate(__func__);
  if (cls == nullptr || cls->className == nullptr)
    cf::misuse(__func__, "no class, or a class without a name");
  if (gate.fails() || cf::nextRegisteredType == cf::kTypeLimit) return 0;
  const CFTypeID id = cf::nextRegisteredType++;
  cf::classTable[id] = {cls, nullptr, id, 0};
  return id;
}

CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                   unsigned char*) {
  const Gate gate(__func__);
  if (typeID < cf::kFirstRegisteredType || typeID >= cf::nextRegisteredType) {
    cf::misuse(__func__, "type " + std::to_string(typeID) + " was never registered");
  }
  if (extraBytes < 0) cf::misuse(__func__, "a size below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  cf::Header* const object =
      cf::allocateObject(typeID, sizeof(CFRuntimeBase) + static_cast<size_t>(extraBytes));
  if (object && object->isa->cls->init) object->isa->cls->init(object);
  return object;
}
