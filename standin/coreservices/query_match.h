// Whether something with attributes is what an expression describes.
#pragma once

#include <vector>

#include "query_expression.h"

namespace standin::metadata {

// What has attributes: a file during a search.
class AttributeSource {
 public:
  virtual ~AttributeSource() = default;
  // Appends the attribute's values: none when it is missing. For the key `*`, the values of all attributes.
  virtual void values(const AttributeKey& key, std::vector<Value>& values) = 0;
};

// A comparison is true when any of the attribute's values makes it so. A missing attribute fails every
// comparison but `!=`; so does a value of a type that the comparison's value can't be.
bool matches(const Expression& expression, AttributeSource& source);

}  // namespace standin::metadata
