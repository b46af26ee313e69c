#include "standin/host/program/properties.h"

#include "standin/host/host.h"
#include "standin/host/program/conversions.h"
#include "standin/host/program/fit.h"
#include "standin/host/program/plugin_calls.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

// A method that stands for a property: one without parameters.
const Method* computedProperty(const Class& cls, std::string_view name) {
  for (const Method& method : cls.withMembers().methods) {
    const bool fits =
        method.declaration.parameters.empty() && method.declaration.result.kind != TypeKind::none;
    if (fits && sameName(method.declaration.name, name)) return &method;
  }
  return nullptr;
}

void requireFit(const Value& value, const Type& type, std::string_view name) {
  if (!distance(value, type)) {
    throw CallError(std::string(name) + " is a " + describe(type) + ", not " + value.describe());
  }
}

}  // namespace

Value readProperty(const HostObject& object, const Property& property) {
  switch (property.access) {
    case Property::Access::field:
      return readField(property.type, object.data() + property.parameter, property.name.c_str());
    case Property::Access::functions:
      return callPlugin(property.getter, {wordOf(object.block()), property.parameter}, property.type,
                        property.name.c_str());
    case Property::Access::own:
      break;
  }
  return object.ownProperty(property);
}

void writeProperty(HostObject& object, const Property& property, const Value& value) {
  switch (property.access) {
    case Property::Access::field:
      return writeField(property.type, object.data() + property.parameter, value);
    case Property::Access::functions:
      return callSetter(property.setter, {wordOf(object.block()), property.parameter}, property.type, value,
                        property.name.c_str());
    case Property::Access::own:
      object.own[lower(property.name)] = value;
  }
}

void emptyProperties() {
  for (const Ref& each : everythingAlive()) {
    auto* const object = asKind<HostObject>(*each.thing());
    if (!object) continue;
    for (const Property& property : object->cls.withMembers().properties) {
      const bool holds = property.access == Property::Access::field && property.type.isHandle();
      if (holds) writeProperty(*object, property, emptyValue(property.type));
    }
  }
}

Value get(const Value& object, std::string_view name) {
  const HostObject& instance = instanceIn(object, name, "asked of");
  const Ref held = object.reference();
  if (const Property* const property = findProperty(instance.cls, name))
    return readProperty(instance, *property);
  if (computedProperty(instance.cls, name)) return callWith(object, name, {});
  throw CallError(instance.cls.name + " has no property " + std::string(name));
}

void set(const Value& object, std::string_view name, const Value& value) {
  HostObject& instance = instanceIn(object, name, "asked of");
  const Ref held = object.reference();
  if (const Property* const property = findProperty(instance.cls, name)) {
    if (property->readOnly) throw CallError(property->name + " of " + instance.cls.name + " can't be set");
    requireFit(value, property->type, name);
    writeProperty(instance, *property, value);
    return;
  }
  const Method* const method = computedProperty(instance.cls, name);
  if (!method) throw CallError(instance.cls.name + " has no property " + std::string(name));
  if (!method->setter)
    throw CallError(method->declaration.name + " of " + instance.cls.name + " can't be set");
  requireFit(value, method->declaration.result, name);
  callSetter(method->setter, {wordOf(instance.block())}, method->declaration.result, value,
             method->declaration.name.c_str());
}

}  // namespace standin::host
