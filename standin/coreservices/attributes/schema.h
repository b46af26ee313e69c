// What is known of each attribute, whatever the file.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "standin/coreservices/attributes/attributes.h"

namespace standin::metadata {

enum class ValueType : uint8_t { Boolean, Number, Date, String, UUID, Data, Strings, Dates };

// What has to be looked at for an attribute of a file to be told, from what takes the least time to what
// takes the most.
enum class Cost : uint8_t {
  Name,     // where the file is, and how it is called
  Record,   // what the file system keeps of every file
  Further,  // what it keeps of some: extended attributes, and the entries of folders
  Type,     // that, the name, and perhaps the first bytes
  Content,
};

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

// Of None, which no file has, the least.
Cost costOf(FileAttribute attribute);

// `attribute` isn't None.
const AttributeInfo& infoOf(FileAttribute attribute);

}  // namespace standin::metadata
