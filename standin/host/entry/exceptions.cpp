// The entry point of exceptions.
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/program/plugin_calls.h"
#include "standin/host/state/exceptions.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/objects.h"

namespace standin::host {

namespace entry {

void RuntimeRaiseException(ObjectHandle handle) {
  const Gate gate(__func__);
  const auto* const object = asKind<HostObject>(objectThingAt(handle));
  const Class* const base = runtime().classes.find("RuntimeException");
  if (!object || !object->cls.isOrDerivesFrom(*base)) {
    die(__func__, "the " + objectThingAt(handle).describe() + " is no exception");
  }
  if (gate.fails()) return;
  const Value self = Value::object(Ref::share(handle));
  Exception exception{object->cls.name, get(self, "Message").text(),
                      static_cast<int32_t>(get(self, "ErrorNumber").integer())};
  raise(exception);
  if (settings().raiseByUnwinding && pluginCallUnderway()) throw Raised{std::move(exception)};
}

}  // namespace entry
}  // namespace standin::host
