#include "standin/host/interpreter/values.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <compare>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include <unicode/uchar.h>

#include "standin/host/host.h"
#include "standin/host/interpreter/machine.h"
#include "standin/host/language/encodings.h"
#include "standin/host/program/fit.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/plain_values.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

constexpr int64_t kMostElements = 10'000'000;

// Of a reference that of objects.
TypeKind kindOf(const Value& value) {
  constexpr TypeKind kKinds[] = {TypeKind::object, TypeKind::boolean, TypeKind::int32,  TypeKind::uint32,
                                 TypeKind::int64,  TypeKind::single,  TypeKind::number, TypeKind::color,
                                 TypeKind::string, TypeKind::object,  TypeKind::object};
  return kKinds[static_cast<int>(value.kind())];
}

[[noreturn]] void mismatch(const Value& value, const Type& type) {
  raise("TypeMismatchException", "expected " + aValueOf(type) + ", not " + value.describe());
}

// The value as one that is no object: a date counts as its seconds. Raises a TypeMismatchException.
Value plain(const Value& value, const Type& wanted) {
  if (isDate(value)) return totalSeconds(value);
  if (value.kind() >= Kind::object) mismatch(value, wanted);
  return value.kind() == Kind::string ? textOfBytes(utf8Of(value)) : value;
}

// --- Operators ---

// The kind in which values of both are computed; nothing where they don't fit.
std::optional<TypeKind> commonKind(TypeKind one, TypeKind other) {
  if (!isNumber(one) || !isNumber(other)) return one == other ? std::optional(one) : std::nullopt;
  if (isReal(one) || isReal(other)) return TypeKind::number;
  return one == other ? one : TypeKind::int64;
}

// Of whole numbers; the least one has no opposite.
uint64_t quotient(uint64_t a, uint64_t b) {
  if (b == 0) raise("RuntimeException", "a whole number divided by zero");
  const auto divisor = static_cast<int64_t>(b);
  return divisor == -1 ? 0 - a : static_cast<uint64_t>(static_cast<int64_t>(a) / divisor);
}

uint64_t remainder(uint64_t a, uint64_t b) {
  return a - quotient(a, b) * b;
}

const std::string& checked(const std::string& bytes) {
  if (bytes.size() > kMostTextBytes) raise("OutOfMemoryException", "a text of more than 32 MB");
  return bytes;
}

Value joined(const Value& one, const Value& other) {
  if (one.isNil()) return other;
  if (other.isNil()) return one;
  if (one.encoding() != other.encoding()) return textOfBytes(utf8Of(one) + utf8Of(other));
  return Value::string(checked(one.bytes() + other.bytes()), one.encoding());
}

// Dates are ordered by their times; of other objects it is told whether they are the same.
std::partial_ordering order(TypeKind kind, const Value& one, const Value& other) {
  if (kind == TypeKind::string) return compareTexts(one, other) <=> 0;
  if (isReal(kind)) return one.number() <=> other.number();
  if (kind != TypeKind::object) return one.integer() <=> other.integer();
  if (isDate(one) && isDate(other)) return totalSeconds(one) <=> totalSeconds(other);
  return one.handle() == other.handle() ? std::partial_ordering::equivalent
                                        : std::partial_ordering::unordered;
}

}  // namespace

// What it makes of whole numbers, of other numbers, or for which order of its operands it is True.
struct Operator {
  std::string_view text;
  // Of their 64 bits, of which the result keeps what its type has: so overflow wraps.
  uint64_t (*ofWholes)(uint64_t, uint64_t) = nullptr;
  double (*ofReals)(double, double) = nullptr;
  bool (*holds)(std::partial_ordering) = nullptr;

  bool isEquality() const { return text == "=" || text == "<>"; }
  bool takes(TypeKind kind) const {
    if (kind == TypeKind::string) return holds || text == "+";
    if (isNumber(kind)) return !isReal(kind) || holds || ofReals;
    return isEquality() || (kind == TypeKind::boolean && ofWholes && !ofReals);
  }
};

namespace {

constexpr Operator kOperators[] = {
    {"+", [](uint64_t a, uint64_t b) { return a + b; }, [](double a, double b) { return a + b; }},
    {"-", [](uint64_t a, uint64_t b) { return a - b; }, [](double a, double b) { return a - b; }},
    {"*", [](uint64_t a, uint64_t b) { return a * b; }, [](double a, double b) { return a * b; }},
    {"/", nullptr, [](double a, double b) { return a / b; }},
    {"\\", quotient, [](double a, double b) { return std::trunc(a / b); }},
    {"Mod", remainder, [](double a, double b) { return std::fmod(a, b); }},
    {"^", nullptr, [](double a, double b) { return std::pow(a, b); }},
    {"And", [](uint64_t a, uint64_t b) { return a & b; }},
    {"Or", [](uint64_t a, uint64_t b) { return a | b; }},
    {"Xor", [](uint64_t a, uint64_t b) { return a ^ b; }},
    {"=", nullptr, nullptr, [](std::partial_ordering order) { return order == 0; }},
    {"<>", nullptr, nullptr, [](std::partial_ordering order) { return order != 0; }},
    {"<", nullptr, nullptr, [](std::partial_ordering order) { return order < 0; }},
    {">", nullptr, nullptr, [](std::partial_ordering order) { return order > 0; }},
    {"<=", nullptr, nullptr, [](std::partial_ordering order) { return order <= 0; }},
    {">=", nullptr, nullptr, [](std::partial_ordering order) { return order >= 0; }},
};

}  // namespace

// --- Types ---

bool sameType(const Type& one, const Type& other) {
  return one.kind == other.kind && one.array == other.array && sameName(one.className, other.className);
}

std::string shown(const Type& type) {
  if (type.kind == TypeKind::none) return "value of no type";
  return sameType(type, kNilType) ? "Nil" : describe(type);
}

std::string aValueOf(const Type& type) {
  const std::string name = shown(type);
  if (sameType(type, kNilType)) return name;
  return (std::string("AEIO").find(name.front()) == std::string::npos ? "a " : "an ") + name;
}

Type elementOf(const Type& array) {
  return {array.kind, array.className, false};
}

Type typeOf(const Value& value) {
  return {kindOf(value), "", false};
}

Value firstValue(const Type& type) {
  if (!type.array) return emptyValue(type);
  // The host has no arrays of UInt32 and Color: their numbers fit into those of Int64.
  constexpr std::pair<TypeKind, ElementKind> kKinds[] = {
      {TypeKind::boolean, ElementKind::boolean}, {TypeKind::int32, ElementKind::int32},
      {TypeKind::uint32, ElementKind::int64},    {TypeKind::int64, ElementKind::int64},
      {TypeKind::single, ElementKind::single},   {TypeKind::number, ElementKind::number},
      {TypeKind::color, ElementKind::int64},     {TypeKind::string, ElementKind::string}};
  ElementKind kind = sameName(type.className, "Date") ? ElementKind::date : ElementKind::object;
  for (const auto& [elementType, elementKind] : kKinds) {
    if (elementType == type.kind) kind = elementKind;
  }
  return Value::object(Ref::adopt(newArray(kind, 0, Side::host)));
}

Value converted(const Value& value, const Type& type) {
  if (isReference(type)) {
    if (value.isNil() && value.kind() != Kind::string) return {};
    if (!distance(value, type)) mismatch(value, type);
    return value;
  }
  if (type.kind == TypeKind::variant) return value;
  if (type.kind == TypeKind::string) return shownValue(value);
  if (type.kind == TypeKind::boolean && value.kind() == Kind::string) return sameName(utf8Of(value), "true");
  const Value simple = plain(value, type);
  if (type.kind == TypeKind::boolean) return asNumber(simple) != 0;
  if (type.kind == TypeKind::single) return static_cast<float>(asNumber(simple));
  if (type.kind == TypeKind::number) return asNumber(simple);
  const int64_t whole = asWhole(simple);
  if (type.kind == TypeKind::color) return Value::color(static_cast<uint32_t>(whole) & 0xFFFFFF);
  return plainValue(type.kind, &whole);
}

Value shownValue(const Value& value) {
  if (value.kind() == Kind::string) return value;
  if (isDate(value)) return sqlDateTime(value);
  if (value.kind() >= Kind::object) mismatch(value, kString);
  const bool isReal = value.kind() == Kind::number || value.kind() == Kind::single;
  return isReal && std::isnan(value.number()) ? "nan" : asText(value);
}

// --- Operators ---

const Operator& operatorNamed(std::string_view text) {
  return *std::find_if(std::begin(kOperators), std::end(kOperators),
                       [text](const Operator& each) { return each.text == text; });
}

std::optional<Type> resultOf(const Operator& op, const Type& one, const Type& other) {
  if (one.kind == TypeKind::none || other.kind == TypeKind::none) return {};
  if (is(TypeKind::variant, one) || is(TypeKind::variant, other)) return op.holds ? kBoolean : kVariant;
  std::optional<TypeKind> kind;
  if (!one.array && !other.array) kind = commonKind(one.kind, other.kind);
  if (isReference(one) && isReference(other)) kind = TypeKind::object;
  const bool dates = sameName(one.className, "Date") && sameType(one, other) && !one.array;
  if (!kind || !(op.takes(*kind) || (dates && op.holds))) return {};
  if (op.holds) return kBoolean;
  return op.ofWholes ? Type{*kind, "", false} : kDouble;
}

Value computed(const Operator& op, const Value& one, const Value& other) {
  const auto kind = commonKind(kindOf(one), kindOf(other));
  const bool dates = isDate(one) && isDate(other) && op.holds;
  if (kind && (op.takes(*kind) || dates)) {
    if (op.holds) return op.holds(order(*kind, one, other));
    if (kind == TypeKind::string) return joined(one, other);
    if (isReal(*kind) || !op.ofWholes) return op.ofReals(one.number(), other.number());
    const uint64_t bits =
        op.ofWholes(static_cast<uint64_t>(one.integer()), static_cast<uint64_t>(other.integer()));
    return plainValue(*kind, &bits);
  }
  if (op.isEquality()) return op.text == "<>";
  raise("TypeMismatchException", one.describe() + " and " + other.describe() + " don't fit each other");
}

bool holds(std::string_view comparison, const Value& one, const Value& other) {
  return computed(operatorNamed(comparison), one, other).boolean();
}

// --- Arrays ---

HostArray& arrayIn(const Value& array) {
  if (array.isNil()) raise("NilObjectException", "the array is Nil");
  return *asKind<HostArray>(thingOf(array.reference()));
}

Value elementAt(const Value& value, int64_t index, const Type& type) {
  HostArray& array = arrayIn(value);
  const Value element = array.valueAt(checkedIndex(index, array.count()));
  const bool isStored = type.kind != TypeKind::uint32 && type.kind != TypeKind::color;
  return isStored ? element : converted(element, type);
}

void setElement(const Value& value, int64_t position, const Value& element) {
  HostArray& array = arrayIn(value);
  const int32_t index = checkedIndex(position, array.count());
  if (array.holdsHandles()) {
    const bool boxes = array.kind() == ElementKind::object;
    return array.setHandle(index, (boxes ? boxed(element) : element.reference()).get());
  }
  const uint64_t bits = bitsOf(typeOf(element), element);
  array.write(index, &bits);
}

void insertElement(const Value& value, int64_t index, const Value& element) {
  HostArray& array = arrayIn(value);
  if (array.count() >= kMostElements)
    raise("OutOfMemoryException", "an array of more than 10 million elements");
  array.insertEmpty(checkedIndex(index, int64_t{array.count()} + 1));
  setElement(value, index, element);
}

int32_t checkedIndex(int64_t index, int64_t end) {
  if (index < 0 || index >= end) {
    const std::string range = end == 0 ? "the array is empty" : "the last one is " + std::to_string(end - 1);
    raise("OutOfBoundsException", "no element " + std::to_string(index) + "; " + range);
  }
  return static_cast<int32_t>(index);
}

void resize(const Value& value, int64_t upperBound) {
  HostArray& array = arrayIn(value);
  if (upperBound < -1)
    raise("OutOfBoundsException", "an upper bound below -1: " + std::to_string(upperBound));
  if (upperBound >= kMostElements) raise("OutOfMemoryException", "an array of more than 10 million elements");
  while (array.count() > upperBound + 1) array.remove(array.count() - 1);
  while (array.count() < upperBound + 1) array.insertEmpty(array.count());
}

// --- Texts ---

std::string utf8Of(const Value& text) {
  if (text.isNil()) return {};
  if (text.encoding() == kEncodingUtf8 || text.encoding() == kEncodingUnknown) return text.bytes();
  return convert(text.bytes(), text.encoding(), kEncodingUtf8).value_or(text.bytes());
}

std::u32string charactersOf(const Value& text) {
  const std::string utf8 = utf8Of(text);
  auto bytes = convert(utf8, kEncodingUtf8, kEncodingUtf32);
  if (!bytes) bytes = convert(utf8, kEncodingUnknown, kEncodingUtf32);
  std::u32string characters(bytes->size() / sizeof(char32_t), U'\0');
  std::memcpy(characters.data(), bytes->data(), bytes->size());
  return characters;
}

Value textOf(std::u32string_view characters) {
  const std::string_view bytes(reinterpret_cast<const char*>(characters.data()),
                               characters.size() * sizeof(char32_t));
  return Value::string(checked(convert(bytes, kEncodingUtf32, kEncodingUtf8).value_or("")), kEncodingUtf8);
}

Value textOfBytes(const std::string& bytes) {
  const bool isValid = convert(checked(bytes), kEncodingUtf8, kEncodingUtf16).has_value();
  return Value::string(bytes, isValid ? kEncodingUtf8 : kEncodingUnknown);
}

std::u32string folded(std::u32string characters) {
  for (char32_t& each : characters)
    each = static_cast<char32_t>(u_foldCase(static_cast<UChar32>(each), U_FOLD_CASE_DEFAULT));
  return characters;
}

int compareTexts(const Value& one, const Value& other) {
  const std::string a = utf8Of(one), b = utf8Of(other);
  if (!isAsciiText(a, kEncodingUtf8) || !isAsciiText(b, kEncodingUtf8))
    return folded(charactersOf(one)).compare(folded(charactersOf(other)));
  const int difference = compareLetters(a.data(), b.data(), std::min(a.size(), b.size()));
  return difference != 0 ? difference : (a.size() > b.size()) - (a.size() < b.size());
}

// --- Dates ---

bool isDate(const Value& value) {
  return value.kind() == Kind::object && isDate(thingOf(value.reference()));
}

}  // namespace standin::host
