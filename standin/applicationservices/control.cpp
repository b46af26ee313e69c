#include "standin/applicationservices/control.h"

#include <string>

#include "standin/applicationservices/instances.h"

namespace standin {

using graphics::Kind;

std::vector<std::string_view> graphicsTypes() {
  std::vector<std::string_view> names;
  for (int i = 0; i < graphics::kKinds; ++i) names.emplace_back(graphics::nameOf(static_cast<Kind>(i)));
  return names;
}

CFTypeRef makeInstance(std::string_view typeName) {
  const Gate gate(__func__);
  for (int i = 0; i < graphics::kKinds; ++i) {
    const auto kind = static_cast<Kind>(i);
    if (typeName != graphics::nameOf(kind)) continue;
    return kind == Kind::CGColor ? CGColorCreateGenericRGB(0, 0, 0, 1) : graphics::makeObject(kind);
  }
  die(__func__, "no type is called " + std::string(typeName));
}

}  // namespace standin
