#include "standin/host/interpreter/types.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/class_members.h"
#include "standin/host/interpreter/machine.h"
#include "standin/host/program/fit.h"
#include "standin/host/things/dates.h"
#include "standin/host/things/plain_values.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

constexpr int64_t kMostElements = 10'000'000;

bool isDate(const Value& value) {
  return value.kind() == Kind::object && isDate(thingOf(value.reference()));
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

Value wholeOf(TypeKind kind, int64_t whole) {
  switch (kind) {
    case TypeKind::int64:
      return whole;
    case TypeKind::uint32:
      return static_cast<uint32_t>(whole);
    case TypeKind::color:
      return Value::color(static_cast<uint32_t>(whole) & 0xFFFFFF);
    default:
      return static_cast<int32_t>(whole);
  }
}

bool truthIn(const Value& value) {
  if (value.kind() == Kind::string) return sameName(utf8Of(value), "true");
  return asNumber(plain(value, kBoolean)) != 0;
}

// --- Operators ---

template <class T>
std::optional<bool> compared(Operator op, const T& a, const T& b) {
  switch (op) {
    case Operator::equal:
      return a == b;
    case Operator::unequal:
      return a != b;
    case Operator::less:
      return a < b;
    case Operator::greater:
      return a > b;
    case Operator::atMost:
      return a <= b;
    case Operator::atLeast:
      return a >= b;
    default:
      return {};
  }
}

// Overflow wraps: the computation is one of unsigned numbers.
template <class T>
Value ofWholes(Operator op, T a, T b) {
  if (const auto truth = compared(op, a, b)) return *truth;
  using U = std::make_unsigned_t<T>;
  const auto x = static_cast<U>(a), y = static_cast<U>(b);
  switch (op) {
    case Operator::add:
      return static_cast<T>(x + y);
    case Operator::subtract:
      return static_cast<T>(x - y);
    case Operator::multiply:
      return static_cast<T>(x * y);
    case Operator::both:
      return static_cast<T>(x & y);
    case Operator::either:
      return static_cast<T>(x | y);
    case Operator::exactlyOne:
      return static_cast<T>(x ^ y);
    default:
      break;
  }
  if (b == 0) raise("RuntimeException", "a whole number divided by zero");
  const bool negates = std::is_signed_v<T> && y == static_cast<U>(-1);  // the least number has no opposite
  if (op == Operator::modulo) return negates ? T(0) : static_cast<T>(a % b);
  return negates ? static_cast<T>(U(0) - x) : static_cast<T>(a / b);
}

Value ofReals(Operator op, double a, double b) {
  if (const auto truth = compared(op, a, b)) return *truth;
  switch (op) {
    case Operator::add:
      return a + b;
    case Operator::subtract:
      return a - b;
    case Operator::multiply:
      return a * b;
    case Operator::divide:
      return a / b;
    case Operator::modulo:
      return std::fmod(a, b);
    case Operator::divideWhole:
      return std::trunc(a / b);
    case Operator::power:
      return std::pow(a, b);
    default:
      return ofWholes(op, asWhole(a), asWhole(b));
  }
}

Value ofTruths(Operator op, bool a, bool b) {
  if (op == Operator::both) return a && b;
  if (op == Operator::either) return a || b;
  if (op == Operator::exactlyOne) return a != b;
  return compared(op, a, b).value_or(false);
}

// Dates by their times, all others whether they are the same object.
Value ofObjects(Operator op, const Value& one, const Value& other) {
  if (isDate(one) && isDate(other)) {
    if (const auto truth = compared(op, totalSeconds(one), totalSeconds(other))) return *truth;
  } else if (op == Operator::equal || op == Operator::unequal) {
    return (one.handle() == other.handle()) == (op == Operator::equal);
  }
  raise("TypeMismatchException",
        "objects can't be computed with: " + one.describe() + ", " + other.describe());
}

// The kind in which a value is computed with; nothing for references.
std::optional<TypeKind> kindOf(const Value& value) {
  constexpr std::optional<TypeKind> kKinds[] = {{},
                                                TypeKind::boolean,
                                                TypeKind::int32,
                                                TypeKind::uint32,
                                                TypeKind::int64,
                                                TypeKind::number,
                                                TypeKind::number,
                                                TypeKind::color,
                                                TypeKind::string};
  return value.kind() < Kind::object ? kKinds[static_cast<int>(value.kind())] : std::nullopt;
}

bool isNumberKind(TypeKind kind) {
  return kind >= TypeKind::int8 && kind <= TypeKind::number;
}

}  // namespace

// --- Types ---

bool isWhole(const Type& type) {
  return !type.array && type.kind >= TypeKind::int8 && type.kind <= TypeKind::uint64;
}

bool isReal(const Type& type) {
  return !type.array && (type.kind == TypeKind::single || type.kind == TypeKind::number);
}

bool sameType(const Type& one, const Type& other) {
  return one.kind == other.kind && one.array == other.array && sameName(one.className, other.className);
}

std::string shown(const Type& type) {
  if (isNone(type)) return "value of no type";
  if (type.kind == TypeKind::object && type.className.empty()) return "Nil";
  return describe(type);
}

std::string aValueOf(const Type& type) {
  const std::string name = shown(type);
  if (sameType(type, {TypeKind::object, "", false})) return name;
  return (std::string("AEIO").find(name.front()) == std::string::npos ? "a " : "an ") + name;
}

Type elementOf(const Type& array) {
  Type type = array;
  type.array = false;
  return type;
}

Value firstValue(const Type& type) {
  if (!type.array) return emptyValue(type);
  // The host has no arrays of UInt32 and Color: their numbers fit into those of Int64.
  constexpr std::pair<TypeKind, ElementKind> kKinds[] = {
      {TypeKind::boolean, ElementKind::boolean}, {TypeKind::int32, ElementKind::int32},
      {TypeKind::uint32, ElementKind::int64},    {TypeKind::int64, ElementKind::int64},
      {TypeKind::single, ElementKind::single},   {TypeKind::number, ElementKind::number},
      {TypeKind::color, ElementKind::int64},     {TypeKind::string, ElementKind::string}};
  const auto* const row = std::find_if(std::begin(kKinds), std::end(kKinds),
                                       [&type](const auto& each) { return each.first == type.kind; });
  const ElementKind other = sameName(type.className, "Date") ? ElementKind::date : ElementKind::object;
  const ElementKind kind = row == std::end(kKinds) ? other : row->second;
  return Value::object(Ref::adopt(newArray(kind, 0, Side::host)));
}

Value converted(const Value& value, const Type& type) {
  if (type.array || type.kind == TypeKind::object) {
    if (value.isNil() && value.kind() != Kind::string) return {};
    if (!distance(value, type)) mismatch(value, type);
    return value;
  }
  switch (type.kind) {
    case TypeKind::string:
      return value.kind() == Kind::string ? value : shownValue(value);
    case TypeKind::boolean:
      return truthIn(value);
    case TypeKind::single:
      return static_cast<float>(asNumber(plain(value, type)));
    case TypeKind::number:
      return asNumber(plain(value, type));
    case TypeKind::variant:
    case TypeKind::none:
      return value;
    default:
      return wholeOf(type.kind, asWhole(plain(value, type)));
  }
}

Value shownValue(const Value& value) {
  if (value.kind() == Kind::string) return value;
  if (isDate(value)) return sqlDateTime(value);
  if (value.kind() >= Kind::object) mismatch(value, kString);
  return asText(value);
}

// --- Arrays ---

HostArray& arrayIn(const Value& array) {
  if (array.isNil()) raise("NilObjectException", "the array is Nil");
  return *asKind<HostArray>(thingOf(array.reference()));
}

namespace {

int32_t checkedIndex(int64_t index, int64_t end) {
  if (index < 0 || index >= end) {
    const std::string range = end == 0 ? "the array is empty" : "the last one is " + std::to_string(end - 1);
    raise("OutOfBoundsException", "no element " + std::to_string(index) + "; " + range);
  }
  return static_cast<int32_t>(index);
}

template <class T>
void writePlain(HostArray& array, int32_t index, T value) {
  array.write(index, &value);
}

}  // namespace

Value elementAt(const Value& value, int64_t index, const Type& type) {
  HostArray& array = arrayIn(value);
  const Value element = array.valueAt(checkedIndex(index, array.count()));
  const bool stored = type.kind != TypeKind::uint32 && type.kind != TypeKind::color;
  return stored ? element : converted(element, type);
}

void setElement(const Value& value, int64_t position, const Value& element) {
  HostArray& array = arrayIn(value);
  const int32_t index = checkedIndex(position, array.count());
  switch (array.kind()) {
    case ElementKind::boolean:
      return writePlain(array, index, static_cast<uint8_t>(element.boolean()));
    case ElementKind::int32:
      return writePlain(array, index, static_cast<int32_t>(element.integer()));
    case ElementKind::int64:
      return writePlain(array, index, element.integer());
    case ElementKind::single:
      return writePlain(array, index, static_cast<float>(element.number()));
    case ElementKind::number:
      return writePlain(array, index, element.number());
    case ElementKind::string:
    case ElementKind::date:
      return array.setHandle(index, element.handle());
    case ElementKind::object:
      return array.setHandle(index, boxed(element).get());
  }
}

void insertElement(const Value& value, int64_t index, const Value& element) {
  HostArray& array = arrayIn(value);
  if (array.count() >= kMostElements)
    raise("OutOfMemoryException", "an array of more than 10 million elements");
  array.insertEmpty(checkedIndex(index, int64_t{array.count()} + 1));
  setElement(value, index, element);
}

Value removeElement(const Value& value, int64_t index, const Type& type) {
  const Value removed = elementAt(value, index, type);
  arrayIn(value).remove(static_cast<int32_t>(index));
  return removed;
}

void resize(const Value& value, int64_t upperBound) {
  HostArray& array = arrayIn(value);
  if (upperBound < -1)
    raise("OutOfBoundsException", "an upper bound below -1: " + std::to_string(upperBound));
  if (upperBound >= kMostElements) raise("OutOfMemoryException", "an array of more than 10 million elements");
  while (array.count() > upperBound + 1) array.remove(array.count() - 1);
  while (array.count() < upperBound + 1) array.insertEmpty(array.count());
}

// --- Operators ---

TypeKind commonKind(TypeKind one, TypeKind other) {
  const auto real = [](TypeKind kind) { return kind == TypeKind::single || kind == TypeKind::number; };
  if (real(one) || real(other)) return TypeKind::number;
  return one == other ? one : TypeKind::int64;
}

Value computed(Operator op, TypeKind kind, const Value& one, const Value& other) {
  switch (kind) {
    case TypeKind::boolean:
      return ofTruths(op, one.boolean(), other.boolean());
    case TypeKind::int32:
      return ofWholes(op, static_cast<int32_t>(one.integer()), static_cast<int32_t>(other.integer()));
    case TypeKind::uint32:
      return ofWholes(op, static_cast<uint32_t>(one.integer()), static_cast<uint32_t>(other.integer()));
    case TypeKind::int64:
      return ofWholes(op, one.integer(), other.integer());
    case TypeKind::single:
    case TypeKind::number:
      return ofReals(op, one.number(), other.number());
    case TypeKind::color:
      return compared(op, one.integer(), other.integer()).value_or(false);
    case TypeKind::string:
      if (op == Operator::add) return joined(one, other);
      return compared(op, compareTexts(one, other), 0).value_or(false);
    default:
      return ofObjects(op, one, other);
  }
}

Value computedOfVariants(Operator op, const Value& one, const Value& other) {
  const auto left = kindOf(one), right = kindOf(other);
  if (!left && !right) return ofObjects(op, one, other);
  if (left && right) {
    const bool floats = op == Operator::divide || op == Operator::power;
    if (isNumberKind(*left) && isNumberKind(*right))
      return computed(op, floats ? TypeKind::number : commonKind(*left, *right), one, other);
    const bool joins = op == Operator::add || compares(op);
    const bool logical = *left == TypeKind::boolean && op >= Operator::both && op <= Operator::unequal;
    const bool same =
        (*left == TypeKind::string && joins) || logical || (*left == TypeKind::color && compares(op));
    if (*left == *right && same) return computed(op, *left, one, other);
  }
  if (op == Operator::equal || op == Operator::unequal) return op == Operator::unequal;
  raise("TypeMismatchException", one.describe() + " and " + other.describe() + " don't fit each other");
}

}  // namespace standin::host
