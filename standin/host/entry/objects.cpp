// The entry points of instances and classes.
#include "standin/host/things/objects.h"
#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/state/runtime.h"

namespace standin::host {

namespace entry {

ObjectHandle PluginNewInstance(const char* className) {
  const Gate gate(__func__);
  if (!className) die(__func__, "a null class name");
  if (gate.fails()) return nullptr;
  const Class* const cls = availableClass(className);
  return cls ? newObject(*cls, Side::plugin) : nullptr;
}

const ClassReference* pluginObjectType(const char* className) {
  const Gate gate(__func__);
  if (!className) die(__func__, "a null class name");
  if (gate.fails()) return nullptr;
  const Class* const cls = availableClass(className);
  return cls ? &cls->reference : nullptr;
}

bool RuntimeObjectIsa(ObjectHandle object, const ClassReference* reference) {
  const Gate gate(__func__);
  const Class* const wanted = runtime().classes.find(reference);
  if (!wanted) die(__func__, "the second argument is no class reference of this host");
  const auto* const instance = asKind<HostObject>(objectThingAt(object));
  return !gate.fails() && instance && instance->cls.isOrDerivesFrom(*wanted);
}

// Locks and unlocks can't fail; a null object is ignored.
void REALLockObject(ObjectHandle object) {
  const Gate gate(__func__);
  if (!object) return;
  objectThingAt(object);
  retain(object, Side::plugin);
}

void REALUnlockObject(ObjectHandle object) {
  const Gate gate(__func__);
  if (!object) return;
  objectThingAt(object);
  release(object, Side::plugin);
}

}  // namespace entry
}  // namespace standin::host
