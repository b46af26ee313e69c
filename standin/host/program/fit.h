// Whether values are of the types that declarations name.
#pragma once

#include <optional>

#include "standin/host/language/declarations.h"
#include "standin/host/value.h"

namespace standin::host {

class Counted;

// How far the value is from the type: 0 when it is of that very type, nothing when it does not fit.
std::optional<int> distance(const Value& value, const Type& type);

// Ends the process with the name of the call when the thing is of another type.
void requireType(const Counted& thing, const Type& type, const char* call);

}  // namespace standin::host
