#include "standin/coreservices/media/media_attributes.h"

namespace standin::metadata {

void MediaAttributes::values(FileAttribute attribute, std::vector<Value>& values) const {
  for (const auto& [key, owned] : values_) {
    if (key == attribute) std::visit([&](const auto& value) { values.emplace_back(value); }, owned);
  }
}

}  // namespace standin::metadata
