#include "standin/coreservices/attributes/schema.h"

#include <unordered_map>

namespace standin::metadata {
namespace {

constexpr AttributeInfo kSchema[] = {
#define ATTRIBUTE(name, type, displayName, description) \
  {FileAttribute::name, "kMDItem" #name, ValueType::type, displayName, description},
#include "standin/coreservices/attributes/schema.inc"
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
  static const auto* const byKey = [] {
    auto* const attributes = new std::unordered_map<std::string_view, FileAttribute>;
    for (const AttributeInfo& info : kSchema) attributes->emplace(info.key, info.attribute);
    return attributes;  // kept: items are asked until the very end
  }();
  const auto found = byKey->find(key);
  return found == byKey->end() ? FileAttribute::None : found->second;
}

}  // namespace standin::metadata
