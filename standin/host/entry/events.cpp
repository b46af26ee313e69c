// The entry point of events.
#include "standin/host/program/events.h"
#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/objects.h"

namespace standin::host {

namespace entry {

void* GetEventInstance(ObjectHandle handle, uint32_t index) {
  const Gate gate(__func__);
  const auto* const object = asKind<HostObject>(objectThingAt(handle));
  if (!object) die(__func__, "the " + objectThingAt(handle).describe() + " has no events");
  const Class& cls = object->cls.withMembers();
  for (const Event& event : cls.events) {
    if (event.index != index) continue;
    if (gate.fails() || !findHandler(handle, event)) return nullptr;
    return handlerAddressFor(cls, event);
  }
  die(__func__, "the value " + std::to_string(index) +
                    " is not one that the host wrote into an event record of " + object->cls.name);
}

}  // namespace entry
}  // namespace standin::host
