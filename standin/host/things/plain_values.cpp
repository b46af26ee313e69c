#include "standin/host/things/plain_values.h"

#include <cstring>

namespace standin::host {
namespace {

template <class T>
T load(const void* memory) {
  T value;
  std::memcpy(&value, memory, sizeof value);
  return value;
}

}  // namespace

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
  constexpr uint64_t kZero = 0;
  return plainValue(type.kind, &kZero);
}

}  // namespace standin::host
