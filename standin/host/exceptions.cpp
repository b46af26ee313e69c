#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/conversions.h"
#include "standin/host/entry_points.h"
#include "standin/host/objects.h"
#include "standin/host/own_classes.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

// Of an exception that nobody has numbered yet. Not 0, which is what plug-ins set.
constexpr int32_t freshErrorNumber = -1;

}  // namespace

HostObject* makeException(const Class& cls, Side owner) {
  auto* const object = new HostObject(cls, owner);
  object->own["errornumber"] = freshErrorNumber;
  return object;
}

void raise(Exception exception) {
  runtime().exceptions.push_back(std::move(exception));
}

std::vector<Exception> takeExceptions() {
  return std::exchange(runtime().exceptions, {});
}

namespace entry {

void RuntimeRaiseException(ObjectHandle handle) {
  const Gate gate("RuntimeRaiseException");
  const auto* const object = dynamic_cast<const HostObject*>(&objectThingAt(handle));
  const Class* const base = runtime().classes.find("RuntimeException");
  if (!object || !object->cls.isOrDerivesFrom(*base)) {
    die("RuntimeRaiseException", "the " + objectThingAt(handle).describe() + " is no exception");
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
