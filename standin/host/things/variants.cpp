#include "standin/host/things/variants.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/things/arrays.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/objects.h"

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

}  // namespace

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

HostVariant::HostVariant(Value content, Side owner, std::optional<int32_t> reportedCode)
    : Counted(kThing, kObjectHeadSize, owner), value(std::move(content)), code(reportedCode) {
  markAsObject(*this);
}

int32_t variantType(const Counted& thing) {
  if (const auto* const variant = asKind<HostVariant>(thing))
    return variant->code.value_or(codeOf(variant->value.kind()));
  if (const auto* const array = asKind<HostArray>(thing)) return arrayCode + codeOf(array->kind());
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
  return Ref::adopt(added(new HostVariant(value, Side::host)));
}

ObjectHandle handOver(const Value& value) {
  Ref reference = boxed(value);
  giveToPlugin(reference.get());
  const Counted* const given = reference.leak();
  return given ? handleOf(*given) : nullptr;
}

Value variantOfType(int32_t code, std::string_view text) {
  return Value::object(Ref::adopt(added(new HostVariant(text, Side::host, code))));
}

}  // namespace standin::host
