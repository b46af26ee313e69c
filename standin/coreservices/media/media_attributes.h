// What the content of a file says about itself, as attributes.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

// A value that keeps its own text.
using OwnedValue = std::variant<bool, int64_t, double, Date, std::string>;

class MediaAttributes {
 public:
  MediaAttributes() = default;
  explicit MediaAttributes(std::vector<std::pair<FileAttribute, OwnedValue>> values)
      : values_(std::move(values)) {}

  // Appends the attribute's values, in their order; their text is this object's.
  void values(FileAttribute attribute, std::vector<Value>& values) const;

 private:
  std::vector<std::pair<FileAttribute, OwnedValue>> values_;
};

}  // namespace standin::metadata
