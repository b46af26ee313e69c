// Values that are no handles, between their bits and C++.
#pragma once

#include <cstdint>

#include "standin/host/language/declarations.h"
#include "standin/host/value.h"

namespace standin::host {

// Nil for a kind that has a handle.
Value plainValue(TypeKind kind, const void* memory);
// The value's bits as the type has them, in memory order. The value must fit.
uint64_t bitsOf(const Type& type, const Value& value);

Value valueOf(const Literal& literal, const Type& type);
// What a variable of the type is before anything is stored in it.
Value emptyValue(const Type& type);

}  // namespace standin::host
