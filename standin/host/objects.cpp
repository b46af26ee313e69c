#include "standin/host/objects.h"

#include "standin/gate/gate.h"
#include "standin/host/conversions.h"
#include "standin/host/entry_points.h"
#include "standin/host/events.h"
#include "standin/host/machine_call.h"
#include "standin/host/memory.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

constexpr uint32_t objectMark = 0x484F424A;  // 'HOBJ'
constexpr std::size_t headSize = 48;         // of objects without a plug-in's data

std::size_t blockSize(const Class& cls) {
  return cls.isRegistered() ? cls.dataOffset + cls.dataSize : headSize;
}

void mark(const Counted& thing) {
  thing.words()[0] = objectMark;
  // Where an array has its elements: whoever takes this object for an array stops at the first look.
  thing.words()[2] = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(unreadableAddress()));
}

bool headIsIntact(const HostObject& object) {
  if (object.words()[0] != objectMark) return false;
  if (object.cls.wraps != Class::Wraps::nothing) return true;  // the plug-in writes there
  for (std::size_t i = 1; i < headSize / sizeof(uint32_t); ++i) {
    if (i != 2 && object.words()[i] != 0) return false;
  }
  return true;
}

}  // namespace

HostObject::HostObject(const Class& classOfIt, Side owner)
    : HostObject(classOfIt, owner, blockSize(classOfIt)) {}

HostObject::HostObject(const Class& classOfIt, Side owner, std::size_t blockSize)
    : Counted(blockSize, owner), cls(classOfIt) {
  mark(*this);
}

Value HostObject::ownProperty(const Property& property) const {
  const auto found = own.find(lower(property.name));
  return found == own.end() ? emptyValue(property.type) : found->second;
}

void HostObject::end() {
  if (cls.destructor) {
    const Callout callout;
    callMachine<void>(cls.destructor, {wordOf(block())});
  }
  forgetHandlers(handleOf(*this));
  if (!headIsIntact(*this)) die(currentCall(), "the head of the " + describe() + " was overwritten");
}

HostVariant::HostVariant(Value content, Side owner, std::optional<int32_t> toldCode)
    : Counted(headSize, owner), value(std::move(content)), code(toldCode) {
  mark(*this);
}

Counted& objectThingAt(ObjectHandle handle) {
  Counted& thing = thingAt(handle);
  if (thing.isString()) die(currentCall(), "a string was passed where an object is expected");
  return thing;
}

ObjectHandle handleOf(const Counted& thing) {
  return static_cast<ObjectHandle>(thing.block());
}

const Class* availableClass(std::string_view name) {
  for (const std::string& unknown : runtime().settings.unknownClasses) {
    if (sameName(unknown, name)) return nullptr;
  }
  return runtime().classes.find(name);
}

ObjectHandle newObject(const Class& cls, Side owner) {
  const ObjectHandle handle = handleOf(enrol(cls.make ? cls.make(cls, owner) : new HostObject(cls, owner)));
  if (cls.constructor) {
    const Callout callout;
    callMachine<void>(cls.constructor, {wordOf(handle)});
  }
  return handle;
}

bool isDate(const Counted& thing) {
  const auto* const object = dynamic_cast<const HostObject*>(&thing);
  return object && object->cls.name == "Date";
}

HostObject& instanceIn(const Value& value, std::string_view use) {
  auto* const object =
      value.kind() == Kind::object ? dynamic_cast<HostObject*>(&thingAt(value.handle())) : nullptr;
  if (!object) throw CallError(std::string(use) + " " + value.describe());
  return *object;
}

namespace entry {

ObjectHandle PluginNewInstance(const char* className) {
  const Gate gate("PluginNewInstance");
  if (!className) die("PluginNewInstance", "a null class name");
  if (gate.fails()) return nullptr;
  const Class* const cls = availableClass(className);
  return cls ? newObject(*cls, Side::plugin) : nullptr;
}

const ClassReference* pluginObjectType(const char* className) {
  const Gate gate("pluginObjectType");
  if (!className) die("pluginObjectType", "a null class name");
  if (gate.fails()) return nullptr;
  const Class* const cls = availableClass(className);
  return cls ? &cls->reference : nullptr;
}

bool RuntimeObjectIsa(ObjectHandle object, const ClassReference* reference) {
  const Gate gate("RuntimeObjectIsa");
  const Class* const wanted = runtime().classes.find(reference);
  if (!wanted) die("RuntimeObjectIsa", "the second argument is no class reference of this host");
  const auto* const instance = dynamic_cast<const HostObject*>(&objectThingAt(object));
  return !gate.fails() && instance && instance->cls.isOrDerivesFrom(*wanted);
}

// Locks and unlocks can't fail; a null object is nobody's.
void REALLockObject(ObjectHandle object) {
  const Gate gate("REALLockObject");
  if (!object) return;
  objectThingAt(object);
  retain(object, Side::plugin);
}

void REALUnlockObject(ObjectHandle object) {
  const Gate gate("REALUnlockObject");
  if (!object) return;
  objectThingAt(object);
  release(object, Side::plugin);
}

}  // namespace entry
}  // namespace standin::host
