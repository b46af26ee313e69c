// Colours of the generic RGB space: red, green, blue and alpha.
#include "standin/applicationservices/color.h"

#include <algorithm>
#include <iterator>

#include "standin/applicationservices/instances.h"

struct CGColor {
  CFRuntimeBase base;
  CGFloat components[4];
};

using standin::Gate;
using standin::graphics::Kind;

namespace standin::graphics {

Boolean equalColors(CFTypeRef a, CFTypeRef b) {
  return std::ranges::equal(static_cast<const CGColor*>(a)->components,
                            static_cast<const CGColor*>(b)->components);
}

// Components that are equal give equal hashes: they are counted in 1/255ths, and both zeros give 0.
CFHashCode hashColor(CFTypeRef cf) {
  CFHashCode hash = 0;
  for (const CGFloat component : static_cast<const CGColor*>(cf)->components) {
    hash = hash * 31 + static_cast<CFHashCode>(component * 255);
  }
  return hash;
}

}  // namespace standin::graphics

// As on the Mac, a component outside of 0 to 1 becomes the nearest that is inside.
CGColorRef CGColorCreateGenericRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
  const Gate gate{__func__};
  if (gate.fails()) return nullptr;
  const CFIndex extraBytes = sizeof(CGColor) - sizeof(CFRuntimeBase);
  auto* const color = static_cast<CGColorRef>(standin::graphics::makeObject(Kind::CGColor, extraBytes));
  if (!color) return nullptr;
  const CGFloat given[] = {red, green, blue, alpha};
  std::ranges::transform(given, color->components, [](CGFloat c) { return c >= 0 ? std::min(c, 1.0F) : 0; });
  return color;
}

size_t CGColorGetNumberOfComponents(CGColorRef color) {
  const Gate gate{__func__};
  standin::graphics::check(__func__, color, Kind::CGColor);
  return gate.fails() ? 0 : std::size(color->components);
}

const CGFloat* CGColorGetComponents(CGColorRef color) {
  const Gate gate{__func__};
  standin::graphics::check(__func__, color, Kind::CGColor);
  return gate.fails() ? nullptr : color->components;
}
