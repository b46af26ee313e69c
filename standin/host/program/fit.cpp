#include "standin/host/program/fit.h"

#include <limits>

#include "standin/gate/gate.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/arrays.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

bool isWhole(Kind kind) {
  return kind >= Kind::int32 && kind <= Kind::int64;
}

bool isWhole(TypeKind kind) {
  return kind >= TypeKind::int8 && kind <= TypeKind::uint64;
}

struct Range {
  int64_t least;
  int64_t most;
};

Range rangeOf(TypeKind kind) {
  switch (kind) {
    case TypeKind::int8:
      return {-128, 127};
    case TypeKind::uint8:
      return {0, 255};
    case TypeKind::int16:
      return {-32768, 32767};
    case TypeKind::uint16:
      return {0, 65535};
    case TypeKind::int32:
    case TypeKind::uint32:  // a whole number with all its 32 bits, whatever they are taken for
      return {std::numeric_limits<int32_t>::min(), std::numeric_limits<uint32_t>::max()};
    default:
      return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()};
  }
}

bool isExact(Kind kind, TypeKind type) {
  return (kind == Kind::int32 && type == TypeKind::int32) ||
         (kind == Kind::uint32 && type == TypeKind::uint32) ||
         (kind == Kind::int64 && type == TypeKind::int64);
}

std::optional<int> numberDistance(const Value& value, TypeKind type) {
  const bool real = value.kind() == Kind::single || value.kind() == Kind::number;
  if (type == TypeKind::single || type == TypeKind::number) {
    if (real) return (value.kind() == Kind::single) == (type == TypeKind::single) ? 0 : 1;
    if (isWhole(value.kind())) return 3;
    return {};
  }
  if (!isWhole(value.kind()) || !isWhole(type)) return {};
  const auto [least, most] = rangeOf(type);
  if (value.integer() < least || value.integer() > most) return {};
  return isExact(value.kind(), type) ? 0 : 1;
}

bool isElementKind(ElementKind kind, const Type& type) {
  switch (type.kind) {
    case TypeKind::boolean:
      return kind == ElementKind::boolean;
    case TypeKind::int32:
      return kind == ElementKind::int32;
    case TypeKind::int64:
      return kind == ElementKind::int64;
    case TypeKind::single:
      return kind == ElementKind::single;
    case TypeKind::number:
      return kind == ElementKind::number;
    case TypeKind::string:
      return kind == ElementKind::string;
    case TypeKind::object:
      return kind == (sameName(type.className, "Date") ? ElementKind::date : ElementKind::object);
    case TypeKind::variant:
      return kind == ElementKind::object;
    default:
      return false;
  }
}

bool isOfType(const Counted& thing, const Type& type) {
  if (type.array) {
    const auto* const array = asKind<HostArray>(thing);
    return array && isElementKind(array->kind(), type);
  }
  if (type.kind == TypeKind::string) return thing.isString();
  if (type.kind == TypeKind::variant) return !thing.isString();
  const auto* const object = asKind<HostObject>(thing);
  if (!object) return false;
  const Class* const wanted = runtime().classes.find(type.className);
  return sameName(type.className, "Object") || (wanted && object->cls.isOrDerivesFrom(*wanted));
}

}  // namespace

std::optional<int> distance(const Value& value, const Type& type) {
  if (type.array) {
    if (value.kind() == Kind::nil) return 1;
    if (value.kind() != Kind::array || !isOfType(thingOf(value.reference()), type)) return {};
    return 0;
  }
  switch (type.kind) {
    case TypeKind::none:
      return {};
    case TypeKind::boolean:
      return value.kind() == Kind::boolean ? std::optional(0) : std::nullopt;
    case TypeKind::color:
      return value.kind() == Kind::color ? std::optional(0) : std::nullopt;
    case TypeKind::string:
      return value.kind() == Kind::string ? std::optional(0) : std::nullopt;
    case TypeKind::variant:
      return 5;
    case TypeKind::object:
      if (value.kind() == Kind::nil) return 1;
      if (value.kind() != Kind::object || !isOfType(thingOf(value.reference()), type)) return {};
      return 0;
    default:
      return numberDistance(value, type.kind);
  }
}

void requireType(const Counted& thing, const Type& type, const char* call) {
  if (!isOfType(thing, type)) die(call, "the " + thing.describe() + " is no " + describe(type));
}

}  // namespace standin::host
