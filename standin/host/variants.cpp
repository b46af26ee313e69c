#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "standin/gate/gate.h"
#include "standin/host/arrays.h"
#include "standin/host/entry_points.h"
#include "standin/host/objects.h"
#include "standin/host/strings.h"

namespace standin::host {
namespace {

// The host's codes for what a variant holds. An array's is its element's and arrayCode.
enum Code : int32_t {
  int32Code = 2,
  int64Code = 3,
  singleCode = 4,
  numberCode = 5,
  dateCode = 7,
  stringCode = 8,
  objectCode = 9,
  booleanCode = 11,
  colorCode = 16,
  arrayCode = 4096
};

int32_t codeOf(ElementKind kind) {
  switch (kind) {
    case ElementKind::int32:
      return int32Code;
    case ElementKind::int64:
      return int64Code;
    case ElementKind::single:
      return singleCode;
    case ElementKind::number:
      return numberCode;
    case ElementKind::boolean:
      return booleanCode;
    case ElementKind::string:
      return stringCode;
    case ElementKind::date:
      return dateCode;
    case ElementKind::object:
      break;
  }
  return objectCode;
}

int32_t codeOf(Kind kind) {
  switch (kind) {
    case Kind::int32:
      return int32Code;
    case Kind::uint32:
    case Kind::int64:
      return int64Code;
    case Kind::single:
      return singleCode;
    case Kind::number:
      return numberCode;
    case Kind::boolean:
      return booleanCode;
    case Kind::color:
      return colorCode;
    case Kind::string:
      return stringCode;
    default:
      return objectCode;
  }
}

// What an object holds as a number or a text: nothing.
const Value& contentOf(ObjectHandle handle) {
  static const Value nothing;
  const auto* const variant = dynamic_cast<const HostVariant*>(&objectThingAt(handle));
  return variant ? variant->value : nothing;
}

double asNumber(const Value& value) {
  switch (value.kind()) {
    case Kind::single:
    case Kind::number:
      return value.number();
    case Kind::string:
      return std::strtod(value.text().c_str(), nullptr);
    case Kind::nil:
      return 0;
    default:
      return static_cast<double>(value.integer());
  }
}

int64_t asWhole(const Value& value) {
  if (value.kind() == Kind::string) return std::strtoll(value.text().c_str(), nullptr, 10);
  if (value.kind() != Kind::single && value.kind() != Kind::number) {
    return value.kind() == Kind::nil ? 0 : value.integer();
  }
  const double number = value.number();
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (std::isnan(number)) return 0;
  if (number >= limit) return std::numeric_limits<int64_t>::max();
  return number < -limit ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(number);
}

std::string asText(const Value& value) {
  char text[40];
  switch (value.kind()) {
    case Kind::nil:
      return {};
    case Kind::boolean:
      return value.boolean() ? "True" : "False";
    case Kind::color:
      std::snprintf(text, sizeof text, "&h%08X", static_cast<unsigned>(value.integer()));
      return text;
    case Kind::single:
    case Kind::number:
      std::snprintf(text, sizeof text, value.kind() == Kind::single ? "%.7g" : "%.15g", value.number());
      return text;
    default:
      return std::to_string(value.integer());
  }
}

ObjectHandle newVariant(const Gate& gate, Value value) {
  return gate.fails() ? nullptr : handleOf(enrol(new HostVariant(std::move(value), Side::plugin)));
}

}  // namespace

int32_t variantType(const Counted& thing) {
  if (const auto* const variant = dynamic_cast<const HostVariant*>(&thing))
    return variant->code.value_or(codeOf(variant->value.kind()));
  if (const auto* const array = dynamic_cast<const HostArray*>(&thing))
    return arrayCode + codeOf(array->kind());
  return isDate(thing) ? dateCode : objectCode;
}

Ref boxed(const Value& value) {
  if (value.kind() == Kind::nil) return {};
  if (value.kind() == Kind::object || value.kind() == Kind::array) return value.reference();
  // The variant kinds have no unsigned number: one that fits is an Int32, any other an Int64.
  if (value.kind() == Kind::uint32) {
    const int64_t whole = value.integer();
    const bool fits = whole <= std::numeric_limits<int32_t>::max();
    return boxed(fits ? Value(static_cast<int32_t>(whole)) : Value(whole));
  }
  return Ref::adopt(enrol(new HostVariant(value, Side::host)).block());
}

ObjectHandle handOver(const Value& value) {
  Ref reference = boxed(value);
  giveToPlugin(reference.get());
  return static_cast<ObjectHandle>(reference.leak());
}

Value variantOfType(int32_t code, std::string_view text) {
  return Value::object(Ref::adopt(enrol(new HostVariant(text, Side::host, code)).block()));
}

namespace entry {

StringHandle VariantToString(ObjectHandle handle) {
  const Gate gate("VariantToString");
  const Value& content = contentOf(handle);
  if (gate.fails()) return nullptr;
  if (content.kind() == Kind::string) {
    retain(content.handle(), Side::plugin);
    return content.reference().string();
  }
  return newString(asText(content), encodingUtf8, Side::plugin);
}

int32_t VariantToInt32(ObjectHandle handle) {
  const Gate gate("VariantToInt32");
  const Value& content = contentOf(handle);
  return gate.fails() ? 0 : static_cast<int32_t>(asWhole(content));
}

int64_t VariantToInt64(ObjectHandle handle) {
  const Gate gate("VariantToInt64");
  const Value& content = contentOf(handle);
  return gate.fails() ? 0 : asWhole(content);
}

float VariantToSingle(ObjectHandle handle) {
  const Gate gate("VariantToSingle");
  const Value& content = contentOf(handle);
  return gate.fails() ? 0 : static_cast<float>(asNumber(content));
}

double VariantToDouble(ObjectHandle handle) {
  const Gate gate("VariantToDouble");
  const Value& content = contentOf(handle);
  return gate.fails() ? 0 : asNumber(content);
}

ObjectHandle StringToVariant(StringHandle string) {
  const Gate gate("StringToVariant");
  if (string) stringAt(string);
  return newVariant(gate, Value::string(Ref::share(string)));
}

ObjectHandle Int32ToVariant(int32_t value) {
  const Gate gate("Int32ToVariant");
  return newVariant(gate, value);
}

ObjectHandle Int64ToVariant(int64_t value) {
  const Gate gate("Int64ToVariant");
  return newVariant(gate, value);
}

ObjectHandle DoubleToVariant(double value) {
  const Gate gate("DoubleToVariant");
  return newVariant(gate, value);
}

ObjectHandle BooleanToVariant(bool value) {
  const Gate gate("BooleanToVariant");
  return newVariant(gate, value);
}

}  // namespace entry
}  // namespace standin::host
