// What has attributes, for those who compare them.
#pragma once

#include <string>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

struct AttributeKey {
  bool any = false;                          // `*`
  FileAttribute file = FileAttribute::None;  // of a key of the schema
  std::string name;                          // as written
};

class AttributeSource {
 public:
  virtual ~AttributeSource() = default;
  // Appends the attribute's values: none when it is missing. For the key `*`, the values of all attributes
  // but the text content. Text is good until the source is asked again or dies. Answers whether these are the
  // values, and not only those that are known so far.
  virtual bool values(const AttributeKey& key, std::vector<Value>& values) = 0;
};

}  // namespace standin::metadata
