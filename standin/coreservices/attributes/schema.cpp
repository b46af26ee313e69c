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

Cost costOf(FileAttribute attribute) {
  switch (attribute) {
    case FileAttribute::None:
    case FileAttribute::FSName:
    case FileAttribute::DisplayName:
    case FileAttribute::Path:
    case FileAttribute::FSInvisible:
      return Cost::Name;
    case FileAttribute::FSSize:
    case FileAttribute::FSCreationDate:
    case FileAttribute::FSContentChangeDate:
    case FileAttribute::ContentModificationDate:
    case FileAttribute::AttributeChangeDate:
    case FileAttribute::DateAdded:
    case FileAttribute::LastUsedDate:
    case FileAttribute::FSOwnerUserID:
    case FileAttribute::FSOwnerGroupID:
    case FileAttribute::FSExists:
    case FileAttribute::FSIsReadable:
    case FileAttribute::FSIsWriteable:
    case FileAttribute::FSHasCustomIcon:
    case FileAttribute::FSIsExtensionHidden:
    case FileAttribute::FSIsStationery:
    case FileAttribute::FSLabel:
      return Cost::Record;
    case FileAttribute::FSNodeCount:
    case FileAttribute::WhereFroms:
    case FileAttribute::FinderComment:
      return Cost::Further;
    case FileAttribute::ContentType:
    case FileAttribute::ContentTypeTree:
    case FileAttribute::Kind:
      return Cost::Type;
    default:
      return Cost::Content;
  }
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
