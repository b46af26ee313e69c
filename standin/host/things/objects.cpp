#include "standin/host/things/objects.h"

#include <algorithm>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/machine/memory.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

constexpr uint32_t kObjectMark = 0x484F424A;  // 'HOBJ'

size_t blockSize(const Class& cls) {
  return std::max<size_t>(cls.dataOffset + cls.dataSize, kObjectHeadSize);
}

bool headIsIntact(const HostObject& object) {
  if (object.words()[0] != kObjectMark) return false;
  if (object.cls.wraps != Class::Wraps::nothing) return true;  // the plug-in writes there
  for (size_t i = 1; i < kObjectHeadSize / sizeof(uint32_t); ++i) {
    if (i != 2 && object.words()[i] != 0) return false;
  }
  return true;
}

// Null when the value is no instance.
HostObject* instanceOf(const Value& value) {
  return value.kind() == Kind::object ? asKind<HostObject>(thingOf(value.reference())) : nullptr;
}

}  // namespace

void markAsObject(const Counted& thing) {
  thing.words()[0] = kObjectMark;
  // An array has the address of its elements here: reading elements of something that is no array ends the
  // process.
  thing.words()[2] = wordOf(unreadableAddress());
}

HostObject::HostObject(const Class& classOfIt, Side owner)
    : HostObject(classOfIt, owner, blockSize(classOfIt)) {}

HostObject::HostObject(const Class& classOfIt, Side owner, size_t blockSize)
    : Counted(kThing, blockSize, owner), cls(classOfIt) {
  markAsObject(*this);
}

Value HostObject::ownProperty(const Property& property) const {
  const auto found = own.find(lower(property.name));
  return found == own.end() ? emptyValue(property.type) : found->second;
}

void HostObject::beforeEnd() {
  if (cls.beforeEnd) cls.beforeEnd(*this);
}

void HostObject::empty() {
  std::vector<Value> gone = std::move(fields);
}

void HostObject::end() {
  if (cls.destructor) {
    const Callout callout;
    callMachine<void>(cls.destructor, {wordOf(block())});
  }
  forgetHandlers(handleOf(*this));
  if (!headIsIntact(*this)) die(currentCall(), "the head of the " + describe() + " was overwritten");
}

Counted& objectThingAt(ObjectHandle handle) {
  Counted& thing = thingAt(handle);
  if (thing.isString()) die(currentCall(), "a string was passed where an object is expected");
  return thing;
}

ObjectHandle handleOf(const Counted& thing) {
  return static_cast<ObjectHandle>(thing.block());
}

ObjectHandle newObject(const Class& cls, Side owner) {
  const ObjectHandle handle = handleOf(added(cls.make ? cls.make(cls, owner) : new HostObject(cls, owner)));
  if (cls.constructor) {
    const Callout callout;
    callMachine<void>(cls.constructor, {wordOf(handle)});
  }
  return handle;
}

HostObject& instanceIn(const Value& value, std::string_view use) {
  if (HostObject* const object = instanceOf(value)) return *object;
  throw CallError(std::string(use) + " " + value.describe());
}

HostObject& instanceIn(const Value& value, std::string_view name, std::string_view use) {
  if (HostObject* const object = instanceOf(value)) return *object;
  return instanceIn(value, std::string(name) + " " + std::string(use));
}

void throwMismatch(const Value& value, const char* wanted) {
  throw CallError(std::string("not ") + wanted + " but " + value.describe());
}

Value newInstance(std::string_view className) {
  const Class* const cls = availableClass(className);
  if (!cls) throw CallError("no class " + std::string(className));
  return Value::object(Ref::adopt(newObject(*cls, Side::host)));
}

void* instanceData(const Value& object) {
  return instanceIn(object, "instance data asked of").data();
}

bool isA(const Value& object, std::string_view className) {
  const HostObject* const instance = instanceOf(object);
  const Class* const cls = runtime().classes.find(className);
  return instance && cls && instance->cls.isOrDerivesFrom(*cls);
}

std::string classNameOf(const Value& object) {
  const HostObject* const instance = instanceOf(object);
  return instance ? instance->cls.name : "";
}

}  // namespace standin::host
