// The entry points of variants, and what each kind of value is when it is read as another.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/language/encodings.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/strings.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

// The value in a variant. Nil for an object, which is no number and no text, and when the call was chosen to
// fail.
const Value& contentOf(const Gate& gate, ObjectHandle handle) {
  static const Value nothing;
  const auto* const variant = asKind<HostVariant>(objectThingAt(handle));
  return variant && !gate.fails() ? variant->value : nothing;
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
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  if (std::isnan(number)) return 0;
  if (number >= kLimit) return std::numeric_limits<int64_t>::max();
  return number < -kLimit ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(number);
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
  return gate.fails() ? nullptr : handleOf(added(new HostVariant(std::move(value), Side::plugin)));
}

}  // namespace

namespace entry {

StringHandle VariantToString(ObjectHandle handle) {
  const Gate gate(__func__);
  const Value& content = contentOf(gate, handle);
  if (gate.fails()) return nullptr;
  if (content.kind() == Kind::string) {
    retain(content.handle(), Side::plugin);
    return content.reference().string();
  }
  return newString(asText(content), kEncodingUtf8, Side::plugin);
}

int32_t VariantToInt32(ObjectHandle handle) {
  const Gate gate(__func__);
  return static_cast<int32_t>(asWhole(contentOf(gate, handle)));
}

int64_t VariantToInt64(ObjectHandle handle) {
  const Gate gate(__func__);
  return asWhole(contentOf(gate, handle));
}

float VariantToSingle(ObjectHandle handle) {
  const Gate gate(__func__);
  return static_cast<float>(asNumber(contentOf(gate, handle)));
}

double VariantToDouble(ObjectHandle handle) {
  const Gate gate(__func__);
  return asNumber(contentOf(gate, handle));
}

ObjectHandle StringToVariant(StringHandle string) {
  const Gate gate(__func__);
  if (string) stringAt(string);
  return newVariant(gate, Value::string(Ref::share(string)));
}

ObjectHandle Int32ToVariant(int32_t value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle Int64ToVariant(int64_t value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle DoubleToVariant(double value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

ObjectHandle BooleanToVariant(bool value) {
  const Gate gate(__func__);
  return newVariant(gate, value);
}

}  // namespace entry
}  // namespace standin::host
