// The entry points of properties: the plug-in asks by name and type.
#include <algorithm>
#include <type_traits>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/program/properties.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/strings.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

// Of these types alone the plug-in can ask for properties.
enum class Asked { int32, int64, single, number, string };

bool isAskedType(const Type& type, Asked asked) {
  if (type.array) return false;
  switch (asked) {
    case Asked::int32:
      return type.kind == TypeKind::int32 || type.kind == TypeKind::uint32;
    case Asked::int64:
      return type.kind == TypeKind::int64;
    case Asked::single:
      return type.kind == TypeKind::single;
    case Asked::number:
      return type.kind == TypeKind::number;
    case Asked::string:
      return type.kind == TypeKind::string;
  }
  return false;
}

// The property, when the object has one of that name and type.
const Property* askedProperty(ObjectHandle handle, const char* name, Asked asked, HostObject*& object) {
  if (!name) die(currentCall(), "a null property name");
  object = asKind<HostObject>(objectThingAt(handle));
  if (!object) return nullptr;
  const Property* const property = findProperty(object->cls, name);
  return property && isAskedType(property->type, asked) ? property : nullptr;
}

bool isUnreadable(const char* name) {
  const auto& names = settings().unreadableProperties;
  return std::any_of(names.begin(), names.end(),
                     [name](const std::string& unreadable) { return sameName(unreadable, name); });
}

template <class T>
T converted(const Value& value) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value.number());
  } else {
    return static_cast<T>(value.integer());
  }
}

// `ofVariant` reads the value where the property is one that every variant has. Where a property can't be
// read, something is left in the place all the same.
template <class T, class OfVariant>
bool getNumber(const Gate& gate, ObjectHandle handle, const char* name, T* out, Asked asked,
               OfVariant ofVariant) {
  if (!out) die(currentCall(), "a null place for the value");
  HostObject* object = nullptr;
  const Property* const property = askedProperty(handle, name, asked, object);
  if (gate.fails() || isUnreadable(name)) return *out = T(3), false;
  if (!property) return ofVariant(out);
  *out = converted<T>(readProperty(*object, *property));
  return true;
}

bool setAsked(const Gate& gate, ObjectHandle handle, const char* name, const Value& value, Asked asked) {
  HostObject* object = nullptr;
  const Property* const property = askedProperty(handle, name, asked, object);
  if (gate.fails() || !property || property->readOnly) return false;
  writeProperty(*object, *property, value);
  return true;
}

}  // namespace

namespace entry {

bool REALGetPropValueInt(ObjectHandle object, const char* name, int32_t* out) {
  const Gate gate(__func__);
  return getNumber(gate, object, name, out, Asked::int32, [&](int32_t* value) {
    if (sameName(name, "Type")) return *value = variantType(objectThingAt(object)), true;
    return sameName(name, "Int32Value") && (*value = VariantToInt32(object), true);
  });
}

bool REALSetPropValueInt(ObjectHandle object, const char* name, int32_t value) {
  const Gate gate(__func__);
  return setAsked(gate, object, name, value, Asked::int32);
}

bool REALGetPropValueInt64(ObjectHandle object, const char* name, int64_t* out) {
  const Gate gate(__func__);
  return getNumber(gate, object, name, out, Asked::int64, [&](int64_t* value) {
    return sameName(name, "LongValue") && (*value = VariantToInt64(object), true);
  });
}

bool REALGetPropValueSingle(ObjectHandle object, const char* name, float* out) {
  const Gate gate(__func__);
  return getNumber(gate, object, name, out, Asked::single, [&](float* value) {
    return sameName(name, "SingleValue") && (*value = VariantToSingle(object), true);
  });
}

bool REALGetPropValueDouble(ObjectHandle object, const char* name, double* out) {
  const Gate gate(__func__);
  return getNumber(gate, object, name, out, Asked::number, [&](double* value) {
    return sameName(name, "DoubleValue") && (*value = VariantToDouble(object), true);
  });
}

// The string comes with a reference for the plug-in.
bool REALGetPropValueString(ObjectHandle handle, const char* name, StringHandle* out) {
  const Gate gate(__func__);
  if (!out) die(__func__, "a null place for the value");
  HostObject* object = nullptr;
  const Property* const property = askedProperty(handle, name, Asked::string, object);
  if (gate.fails() || isUnreadable(name)) return false;
  if (!property) {
    if (!sameName(name, "StringValue")) return false;
    *out = VariantToString(handle);
    return true;
  }
  const Value value = readProperty(*object, *property);
  retain(value.handle(), Side::plugin);
  *out = value.reference().string();
  return true;
}

bool REALSetPropValueString(ObjectHandle object, const char* name, StringHandle value) {
  const Gate gate(__func__);
  if (value) stringAt(value);
  return setAsked(gate, object, name, Value::string(Ref::share(value)), Asked::string);
}

}  // namespace entry
}  // namespace standin::host
