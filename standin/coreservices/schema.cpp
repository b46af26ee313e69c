#include "schema.h"

#include <algorithm>

namespace standin::metadata {
namespace {

constexpr AttributeInfo kSchema[] = {
#define ATTRIBUTE(name, type, displayName, description) \
  {FileAttribute::name, "kMDItem" #name, ValueType::type, displayName, description},
#include "schema.inc"
#undef ATTRIBUTE
};

}  // namespace

std::span<const AttributeInfo> schema() {
  return kSchema;
}

const AttributeInfo& infoOf(FileAttribute attribute) {
  return kSchema[static_cast<size_t>(attribute) - 1];
}

FileAttribute fileAttributeNamed(std::string_view key) {
  const auto found = std::ranges::find(kSchema, key, &AttributeInfo::key);
  return found == std::end(kSchema) ? FileAttribute::None : found->attribute;
}

}  // namespace standin::metadata
