// What is known of each attribute, whatever the file.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

enum class ValueType : uint8_t { Boolean, Number, Date, String, UUID, Data, Strings, Dates };

constexpr bool isMultiValued(ValueType type) {
  return type == ValueType::Strings || type == ValueType::Dates;
}

struct AttributeInfo {
  FileAttribute attribute;
  std::string_view key;
  ValueType type;
  std::string_view displayName;
  std::string_view description;
};

// Every attribute, in the order of FileAttribute after None.
std::span<const AttributeInfo> schema();

// None for a key that the schema doesn't know. Keys are case-sensitive.
FileAttribute fileAttributeNamed(std::string_view key);

// `attribute` isn't None.
const AttributeInfo& infoOf(FileAttribute attribute);

}  // namespace standin::metadata
