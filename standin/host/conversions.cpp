#include "standin/host/conversions.h"

#include <cstring>
#include <limits>

#include "standin/gate/gate.h"
#include "standin/host/arrays.h"
#include "standin/host/events.h"
#include "standin/host/objects.h"
#include "standin/host/runtime.h"
#include "standin/host/strings.h"

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
    const auto* const array = dynamic_cast<const HostArray*>(&thing);
    return array && isElementKind(array->kind(), type);
  }
  if (type.kind == TypeKind::string) return thing.isString();
  if (type.kind == TypeKind::variant) return !thing.isString();
  const auto* const object = dynamic_cast<const HostObject*>(&thing);
  if (!object) return false;
  const Class* const wanted = runtime().classes.find(type.className);
  return sameName(type.className, "Object") || (wanted && object->cls.isOrDerivesFrom(*wanted));
}

void requireType(const Counted& thing, const Type& type, const char* call) {
  if (!isOfType(thing, type)) die(call, "the " + thing.describe() + " is no " + describe(type));
}

template <class T>
T load(const void* memory) {
  T value;
  std::memcpy(&value, memory, sizeof value);
  return value;
}

Value plainValue(TypeKind kind, const void* memory) {
  switch (kind) {
    case TypeKind::boolean:
      return load<uint8_t>(memory) != 0;
    case TypeKind::int8:
      return int32_t{load<int8_t>(memory)};
    case TypeKind::uint8:
      return int32_t{load<uint8_t>(memory)};
    case TypeKind::int16:
      return int32_t{load<int16_t>(memory)};
    case TypeKind::uint16:
      return int32_t{load<uint16_t>(memory)};
    case TypeKind::int32:
      return load<int32_t>(memory);
    case TypeKind::uint32:
      return load<uint32_t>(memory);
    case TypeKind::int64:
    case TypeKind::uint64:
      return load<int64_t>(memory);
    case TypeKind::single:
      return load<float>(memory);
    case TypeKind::number:
      return load<double>(memory);
    case TypeKind::color:
      return Value::color(load<uint32_t>(memory));
    default:
      return {};
  }
}

// The value's bits as the type has them, in memory order.
uint64_t bitsOf(const Type& type, const Value& value) {
  uint64_t bits = 0;
  if (type.kind == TypeKind::single) {
    const auto single = static_cast<float>(value.number());
    std::memcpy(&bits, &single, sizeof single);
  } else if (type.kind == TypeKind::number) {
    const double number = value.number();
    std::memcpy(&bits, &number, sizeof number);
  } else {
    bits = static_cast<uint64_t>(value.integer());
  }
  return bits;
}

Value handleValue(const Type& type, Ref reference) {
  if (type.kind == TypeKind::string && !type.array) return Value::string(std::move(reference));
  return Value::object(std::move(reference));
}

// The reference that stands for the value where the type has a handle.
Ref handleFor(const Type& type, const Value& value) {
  const bool variant = type.kind == TypeKind::variant && !type.array;
  return variant ? boxed(value) : value.reference();
}

int callDepth = 0;

struct CallUnderway {
  CallUnderway() { ++callDepth; }
  ~CallUnderway() { --callDepth; }
};

// The function's result in as many bytes as it has, or zeros when an exception was thrown through it.
uint64_t rawResult(void* function, const Words& words, const Type& result) {
  const Callout callout;
  const CallUnderway underway;
  uint64_t raw = 0;
  try {
    if (result.isHandle()) return callMachine<uint32_t>(function, words);
    switch (result.kind) {
      case TypeKind::none:
        callMachine<void>(function, words);
        return 0;
      case TypeKind::single: {
        const auto single = callMachine<float>(function, words);
        std::memcpy(&raw, &single, sizeof single);
        return raw;
      }
      case TypeKind::number: {
        const auto number = callMachine<double>(function, words);
        std::memcpy(&raw, &number, sizeof number);
        return raw;
      }
      case TypeKind::int64:
      case TypeKind::uint64:
        return callMachine<uint64_t>(function, words);
      default:
        return callMachine<uint32_t>(function, words);
    }
  } catch (const Raised&) {
    return 0;  // the exception is on record
  }
}

Value takenResult(uint32_t word, const Type& type, const char* method) {
  auto* const handle = reinterpret_cast<void*>(static_cast<uintptr_t>(word));
  if (!handle) return emptyValue(type);
  const Counted* const thing = findThing(handle);
  if (!thing) die(method, "the plug-in returned an address that is no living handle of this host");
  requireType(*thing, type, method);
  takeFromPlugin(handle, method);
  return handleValue(type, Ref::adopt(handle));
}

}  // namespace

std::optional<int> distance(const Value& value, const Type& type) {
  if (type.array) {
    if (value.kind() == Kind::nil) return 1;
    if (value.kind() != Kind::array || !isOfType(thingAt(value.handle()), type)) return {};
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
      if (value.kind() != Kind::object || !isOfType(thingAt(value.handle()), type)) return {};
      return 0;
    default:
      return numberDistance(value, type.kind);
  }
}

void appendWords(Words& words, const Type& type, const Value& value, std::vector<Ref>& kept) {
  if (type.isHandle()) {
    kept.push_back(handleFor(type, value));
    words.push_back(wordOf(kept.back().get()));
    return;
  }
  const uint64_t bits = bitsOf(type, value);
  words.push_back(static_cast<uint32_t>(bits));
  if (type.size() == 8) words.push_back(static_cast<uint32_t>(bits >> 32));
}

Value readField(const Type& type, const void* memory, const char* call) {
  if (!type.isHandle()) return plainValue(type.kind, memory);
  auto* const handle = load<void*>(memory);
  if (!handle) return emptyValue(type);
  requireType(thingAt(handle), type, call);
  return handleValue(type, Ref::share(handle));
}

void writeField(const Type& type, void* memory, const Value& value) {
  if (!type.isHandle()) {
    const uint64_t bits = bitsOf(type, value);
    std::memcpy(memory, &bits, static_cast<std::size_t>(type.size()));
    return;
  }
  const Ref reference = handleFor(type, value);
  void* const handle = reference.get();
  auto* const before = load<void*>(memory);
  retain(handle, Side::plugin);
  std::memcpy(memory, &handle, sizeof handle);
  release(before, Side::plugin);
}

Value callPlugin(void* function, const Words& words, const Type& result, const char* method) {
  const uint64_t raw = rawResult(function, words, result);
  Value value = result.isHandle() ? takenResult(static_cast<uint32_t>(raw), result, method)
                                  : plainValue(result.kind, &raw);
  rethrowHandlerError();
  return value;
}

bool pluginCallUnderway() {
  return callDepth > 0;
}

Value valueOf(const Literal& literal, const Type& type) {
  if (const auto* const truth = std::get_if<bool>(&literal)) return *truth;
  if (const auto* const real = std::get_if<double>(&literal)) return *real;
  if (const auto* const text = std::get_if<std::string>(&literal)) return *text;
  if (const auto* const whole = std::get_if<int64_t>(&literal)) {
    if (type.kind == TypeKind::color) return Value::color(static_cast<uint32_t>(*whole));
    const bool small = *whole == static_cast<int32_t>(*whole);
    return small ? Value(static_cast<int32_t>(*whole)) : Value(*whole);
  }
  return emptyValue(type);
}

Value emptyValue(const Type& type) {
  if (type.kind == TypeKind::string && !type.array) return Value::nullString();
  if (type.isHandle()) return {};
  constexpr uint64_t zero = 0;
  return plainValue(type.kind, &zero);
}

}  // namespace standin::host
