// The types of values, before a program runs and while it does.
#pragma once

#include <optional>
#include <string>

#include "standin/host/interpreter/text.h"
#include "standin/host/language/declarations.h"
#include "standin/host/things/arrays.h"

namespace standin::host {

// An object of no class: Nil.
inline const Type kNilType{TypeKind::object, "", false};
inline const Type kVariant{TypeKind::variant, "", false};
inline const Type kInteger{TypeKind::int32, "", false};
inline const Type kBoolean{TypeKind::boolean, "", false};
inline const Type kString{TypeKind::string, "", false};
inline const Type kDouble{TypeKind::number, "", false};

inline bool isVariant(const Type& type) {
  return type.kind == TypeKind::variant && !type.array;
}
inline bool isText(const Type& type) {
  return type.kind == TypeKind::string && !type.array;
}
inline bool isTruth(const Type& type) {
  return type.kind == TypeKind::boolean && !type.array;
}
inline bool isObject(const Type& type) {
  return type.kind == TypeKind::object && !type.array;
}
inline bool isNone(const Type& type) {
  return type.kind == TypeKind::none;
}
bool isWhole(const Type& type);
bool isReal(const Type& type);
inline bool isNumber(const Type& type) {
  return isWhole(type) || isReal(type);
}
bool sameType(const Type& one, const Type& other);
std::string shown(const Type& type);     // "Nil" and "a value of no type" beside those of declarations
std::string aValueOf(const Type& type);  // "a Date", "an Integer"
// The type of an array's elements.
Type elementOf(const Type& array);

// What a variable of the type begins with. An array is empty, not nil.
Value firstValue(const Type& type);
// The value as one of the type: numbers change into each other, and what is in a variant into what is asked
// for. Raises a TypeMismatchException.
Value converted(const Value& value, const Type& type);
// What Str and Print give; raises a TypeMismatchException for a value without a text.
Value shownValue(const Value& value);

// Elements; raise a NilObjectException and an OutOfBoundsException.
HostArray& arrayIn(const Value& array);
Value elementAt(const Value& array, int64_t index, const Type& type);
void setElement(const Value& array, int64_t index, const Value& value);
void insertElement(const Value& array, int64_t index, const Value& value);
Value removeElement(const Value& array, int64_t index, const Type& type);
void resize(const Value& array, int64_t upperBound);

enum class Operator {
  add,
  subtract,
  multiply,
  divide,
  divideWhole,
  modulo,
  power,
  both,
  either,
  exactlyOne,
  equal,
  unequal,
  less,
  greater,
  atMost,
  atLeast
};
inline bool compares(Operator op) {
  return op >= Operator::equal;
}
// Both of the kind, or, of variants, of any kinds that fit each other: else a TypeMismatchException.
Value computed(Operator op, TypeKind kind, const Value& one, const Value& other);
Value computedOfVariants(Operator op, const Value& one, const Value& other);
// The kind in which numbers of both kinds are computed.
TypeKind commonKind(TypeKind one, TypeKind other);

}  // namespace standin::host
