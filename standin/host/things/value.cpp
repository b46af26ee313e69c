#include "standin/host/value.h"

#include <cstdio>

#include "standin/host/host.h"
#include "standin/host/language/encodings.h"
#include "standin/host/things/arrays.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/strings.h"
#include "standin/host/things/variants.h"

namespace standin::host {

const char* name(Kind kind) {
  constexpr const char* kNames[] = {"nil",    "boolean", "Int32",  "UInt32", "Int64", "single",
                                    "double", "color",   "string", "object", "array"};
  return kNames[static_cast<int>(kind)];
}

Value::Value(std::string_view utf8) : Value(string(utf8, kEncodingUtf8)) {}

Value Value::nullString() {
  return string(Ref());
}

Value Value::string(std::string_view bytes, uint32_t encoding) {
  return string(Ref::adopt(newHostString(std::string(bytes), encoding, Side::host)));
}

Value Value::string(Ref reference) {
  if (!reference.isNull()) stringOf(reference);
  Value value;
  value.kind_ = Kind::string;
  value.reference_ = std::move(reference);
  return value;
}

Value Value::color(uint32_t packed) {
  Value value(packed);
  value.kind_ = Kind::color;
  return value;
}

Value Value::object(Ref reference) {
  if (reference.isNull()) return {};
  const Counted& thing = thingOf(reference);
  if (thing.isString()) dieOfWrongThing(thing, "an object");
  const HostVariant* const variant = asKind<HostVariant>(thing);
  if (variant && !variant->code) return variant->value;
  Value value;
  value.kind_ = thing.kind() == ThingKind::array ? Kind::array : Kind::object;
  value.reference_ = std::move(reference);
  return value;
}

void Value::expect(bool fits, const char* wanted) const {
  if (!fits) throwMismatch(*this, wanted);
}

bool Value::boolean() const {
  expect(kind_ == Kind::boolean, "a boolean");
  return bits_ != 0;
}

int64_t Value::integer() const {
  const bool whole = (kind_ >= Kind::boolean && kind_ <= Kind::int64) || kind_ == Kind::color;
  expect(whole, "a whole number");
  return bits_;
}

double Value::number() const {
  if (kind_ == Kind::single || kind_ == Kind::number) return real_;
  expect(kind_ >= Kind::int32 && kind_ <= Kind::int64, "a number");
  return static_cast<double>(bits_);
}

std::string Value::bytes() const {
  expect(kind_ == Kind::string, "a string");
  return isNil() ? std::string() : stringOf(reference_).bytes;
}

uint32_t Value::encoding() const {
  expect(kind_ == Kind::string && !isNil(), "a string");
  return stringOf(reference_).encoding;
}

std::string Value::text() const {
  expect(kind_ == Kind::string, "a string");
  if (isNil()) return {};
  const HostString& string = stringOf(reference_);
  auto utf8 = convert(string.bytes, string.encoding, kEncodingUtf8);
  if (!utf8) throw CallError("a string whose bytes are no text of encoding " + std::to_string(encoding()));
  return std::move(*utf8);
}

std::string Value::describe() const {
  if (isNil()) return kind_ == Kind::string ? "a null string" : "nil";
  char text[40];
  switch (kind_) {
    case Kind::boolean:
      return bits_ ? "true" : "false";
    case Kind::single:
    case Kind::number:
      std::snprintf(text, sizeof text, "%.15g", real_);
      return text;
    case Kind::string: {
      const auto utf8 = convert(bytes(), encoding(), kEncodingUtf8);
      return utf8 ? '"' + *utf8 + '"' : "a string of " + std::to_string(bytes().size()) + " bytes";
    }
    case Kind::object:
    case Kind::array:
      return "the " + thingAt(handle()).describe();
    default:
      return std::to_string(bits_);
  }
}

}  // namespace standin::host
