// The arrays' entry points, and the procedures by which an array lets its elements be read and changed.
#include <type_traits>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/state/exceptions.h"
#include "standin/host/things/arrays.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

constexpr int32_t kMostElements = 10'000'000;

HostArray& arrayForProcedure(ObjectHandle handle, HostArray::Procedure procedure) {
  HostArray& array = arrayAt(handle);
  if (!array.consume(procedure))
    die(currentCall(), "the procedure was not asked of this array for this call");
  return array;
}

// The element's type is the array's, not the plug-in's choice.
void checkElement(const HostArray& array, void* handle) {
  if (!handle) return;
  const Counted& thing = thingAt(handle);
  const bool fits = array.kind() == ElementKind::date
                        ? isDate(thing)
                        : thing.isString() == (array.kind() == ElementKind::string);
  if (!fits) die(currentCall(), "the " + thing.describe() + " is no element for this array");
}

template <class T>
void store(HostArray& array, int32_t index, T value) {
  if constexpr (std::is_pointer_v<T>) {
    checkElement(array, value);
    array.setHandle(index, value);
  } else {
    array.write(index, &value);
  }
}

template <class T>
void insertElement(ObjectHandle handle, int32_t index, T value) {
  const Gate gate("array insert");
  HostArray& array = arrayForProcedure(handle, HostArray::insert);
  if (gate.fails() || !requireIndex(index, array.count() + 1)) return;
  array.insertEmpty(index);
  store(array, index, value);
}

template <class T>
void setElement(ObjectHandle handle, int32_t index, T value) {
  const Gate gate("array set");
  HostArray& array = arrayForProcedure(handle, HostArray::set);
  if (gate.fails() || !requireIndex(index, array.count())) return;
  store(array, index, value);
}

template <class T>
void setElementValueFirst(ObjectHandle handle, T value, int32_t index) {
  setElement<T>(handle, index, value);
}

// A handle comes with a reference for the plug-in.
template <class T>
bool getElement(ObjectHandle handle, int32_t index, T* out) {
  const Gate gate("array get");
  HostArray& array = arrayForProcedure(handle, HostArray::get);
  if (!out) die(currentCall(), "a null place for the element");
  if (gate.fails() || !requireIndex(index, array.count())) return false;
  if constexpr (std::is_pointer_v<T>) {
    *out = static_cast<T>(array.handleAt(index));
    retain(*out, Side::plugin);
  } else {
    array.read(index, out);
  }
  return true;
}

struct Procedures {
  void* insert;
  void* get;
  void* set;
  void* setValueFirst;
};

template <class T>
Procedures proceduresOf() {
  return {reinterpret_cast<void*>(&insertElement<T>), reinterpret_cast<void*>(&getElement<T>),
          reinterpret_cast<void*>(&setElement<T>), reinterpret_cast<void*>(&setElementValueFirst<T>)};
}

Procedures proceduresFor(const HostArray& array) {
  switch (array.kind()) {
    case ElementKind::int32:
      return proceduresOf<int32_t>();
    case ElementKind::int64:
      return proceduresOf<int64_t>();
    case ElementKind::single:
      return proceduresOf<float>();
    case ElementKind::number:
      return proceduresOf<double>();
    case ElementKind::boolean:
      return proceduresOf<uint8_t>();
    case ElementKind::string:
      return proceduresOf<StringHandle>();
    case ElementKind::date:
    case ElementKind::object:
      break;
  }
  return proceduresOf<ObjectHandle>();
}

}  // namespace

namespace entry {

ObjectHandle RuntimeArrayCreateSingleDimBoundedArray(int32_t elementType, int32_t upperBound) {
  constexpr int32_t kStringElements = 3, kObjectElements = 4;
  const Gate gate(__func__);
  if (elementType != kStringElements && elementType != kObjectElements) {
    die(__func__, "unknown element type " + std::to_string(elementType));
  }
  if (upperBound < -1 || upperBound >= kMostElements) {
    die(__func__, "an upper bound of " + std::to_string(upperBound));
  }
  if (gate.fails()) return nullptr;
  const ElementKind kind = elementType == kStringElements ? ElementKind::string : ElementKind::object;
  return handleOf(newArray(kind, upperBound + 1, Side::plugin));
}

int32_t RuntimeUBound(ObjectHandle handle) {
  const Gate gate(__func__);
  const HostArray& array = arrayAt(handle);
  return gate.fails() ? 0 : array.count() - 1;
}

void* RuntimeArrayDirectGetInsertProc(ObjectHandle handle) {
  const Gate gate(__func__);
  HostArray& array = arrayAt(handle);
  if (gate.fails() || !settings().insertProcedures) return nullptr;
  array.grant(HostArray::insert);
  return proceduresFor(array).insert;
}

void* RuntimeArrayDirectGetGetProc(ObjectHandle handle) {
  const Gate gate(__func__);
  HostArray& array = arrayAt(handle);
  if (gate.fails() || !settings().getProcedures) return nullptr;
  array.grant(HostArray::get);
  return proceduresFor(array).get;
}

void* RuntimeArrayDirectGetSetProc(ObjectHandle handle) {
  const Gate gate(__func__);
  HostArray& array = arrayAt(handle);
  if (gate.fails() || !settings().setProcedures) return nullptr;
  array.grant(HostArray::set);
  return settings().setTakesValueFirst ? proceduresFor(array).setValueFirst : proceduresFor(array).set;
}

StringHandle RuntimeDirectReadStringArray(ObjectHandle handle, int32_t index) {
  const Gate gate(__func__);
  HostArray& array = arrayAt(handle);
  if (array.kind() != ElementKind::string) die(__func__, "an array of other elements than strings");
  if (gate.fails() || !requireIndex(index, array.count())) return nullptr;
  auto* const element = static_cast<StringHandle>(array.handleAt(index));
  retain(element, Side::plugin);
  return element;
}

}  // namespace entry

}  // namespace standin::host
