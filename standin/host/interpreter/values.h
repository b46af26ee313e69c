// The types and values of programs: what a value becomes where another type is expected, how values are
// computed with, arrays and texts. Exceptions are those of the host language (machine.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "standin/host/language/declarations.h"
#include "standin/host/things/arrays.h"

namespace standin::host {

// --- Types ---

// An object of no class: Nil.
inline const Type kNilType{TypeKind::object, "", false};
inline const Type kVariant{TypeKind::variant, "", false};
inline const Type kInteger{TypeKind::int32, "", false};
inline const Type kInt64{TypeKind::int64, "", false};
inline const Type kBoolean{TypeKind::boolean, "", false};
inline const Type kString{TypeKind::string, "", false};
inline const Type kDouble{TypeKind::number, "", false};

inline bool is(TypeKind kind, const Type& type) {
  return type.kind == kind && !type.array;
}
inline bool isReal(TypeKind kind) {
  return kind == TypeKind::single || kind == TypeKind::number;
}
inline bool isNumber(TypeKind kind) {
  return kind >= TypeKind::int8 && kind <= TypeKind::number;
}
inline bool isNumber(const Type& type) {
  return !type.array && isNumber(type.kind);
}
// Nil, or one of the things that it may stand for.
inline bool isReference(const Type& type) {
  return type.array || type.kind == TypeKind::object;
}
bool sameType(const Type& one, const Type& other);
std::string shown(const Type& type);     // "Nil" and "value of no type" beside those of declarations
std::string aValueOf(const Type& type);  // "a Date", "an Integer"
Type elementOf(const Type& array);
Type typeOf(const Value& value);  // of a reference Nil's

// What a variable of the type begins with. An array is empty, not nil.
Value firstValue(const Type& type);
// The value as one of the type: numbers change into each other, and what is in a variant into what is asked
// for. Raises a TypeMismatchException.
Value converted(const Value& value, const Type& type);
// What Str and Print give; raises a TypeMismatchException for a value without a text.
Value shownValue(const Value& value);

// --- Operators ---

struct Operator;
const Operator& operatorNamed(std::string_view text);  // one of the language's binary operators but Is
// The type of what the operator makes of values of these types; nothing where it takes none of them.
std::optional<Type> resultOf(const Operator& op, const Type& one, const Type& other);
// Raises a TypeMismatchException for what is in variants and doesn't fit.
Value computed(const Operator& op, const Value& one, const Value& other);
// The same of the operator of that name, for a result that is a Boolean.
bool holds(std::string_view comparison, const Value& one, const Value& other);

// --- Arrays: a NilObjectException and an OutOfBoundsException are raised ---

HostArray& arrayIn(const Value& array);
Value elementAt(const Value& array, int64_t index, const Type& element);
void setElement(const Value& array, int64_t index, const Value& value);
void insertElement(const Value& array, int64_t index, const Value& value);
// The index, or an OutOfBoundsException unless it is from 0 to below the end.
int32_t checkedIndex(int64_t index, int64_t end);
void resize(const Value& array, int64_t upperBound);

// --- Texts: their characters, whatever the encoding ---

constexpr size_t kMostTextBytes = 32 << 20;
// In UTF-8; the bytes themselves where they are no text of their encoding.
std::string utf8Of(const Value& text);
// Bytes that are no text of their encoding count as MacRoman.
std::u32string charactersOf(const Value& text);
Value textOf(std::u32string_view characters);
// In UTF-8, or, where they are none, of no known encoding.
Value textOfBytes(const std::string& bytes);
// Below 0, 0 or above it, whatever the letters' case.
int compareTexts(const Value& one, const Value& other);
std::u32string folded(std::u32string characters);

// --- Dates ---

bool isDate(const Value& value);
// Seconds since 1904-01-01, as the date's clock counts them.
double totalSeconds(const Value& date);
Value sqlDateTime(const Value& date);

}  // namespace standin::host
