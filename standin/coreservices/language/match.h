// Whether something with attributes is what an expression describes.
#pragma once

#include <vector>

#include "standin/coreservices/attributes/attribute_source.h"
#include "standin/coreservices/language/expression.h"

namespace standin::metadata {

// A comparison is true when any of the attribute's values makes it so, also `!=`: an attribute of two values
// is unequal to each of them. A missing attribute fails every comparison but `!=`; so does a value of a type
// that the comparison's value can't be.
//
// Of a time that lasts, as a day does, `==` means within it and `!=` not within it; `<`, `>`, `<=`, `>=` and
// InRange compare with its start.
//
// Unknown where it depends on an attribute whose values the source doesn't know yet. The source is asked for
// what is cheap first, and for the rest only where that doesn't decide.
enum class Match { No, Yes, Unknown };
Match match(const Expression& expression, AttributeSource& source);
// The same for who matches many: `values` is memory to work with, whatever is in it.
Match match(const Expression& expression, AttributeSource& source, std::vector<Value>& values);

}  // namespace standin::metadata
