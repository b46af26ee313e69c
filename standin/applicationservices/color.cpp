// Colours of the generic RGB space.
#include <algorithm>
#include <iterator>

#include "standin/applicationservices/color_class.h"
#include "standin/applicationservices/instances.h"

using standin::Gate;
using standin::graphics::Kind;

// As on the Mac, a component outside of 0 to 1 becomes the nearest that is inside.
CGColorRef CGColorCreateGenericRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
  const Gate gate(__func__);
  if (gate.fails()) return nullptr;
  const CFIndex extraBytes = sizeof(CGColor) - sizeof(CFRuntimeBase);
  auto* const color = static_cast<CGColorRef>(standin::graphics::makeObject(Kind::CGColor, extraBytes));
  if (!color) return nullptr;
  const CGFloat given[] = {red, green, blue, alpha};
  std::ranges::transform(given, color->components, [](CGFloat c) { return c >= 0 ? std::min(c, 1.0F) : 0; });
  return color;
}

size_t CGColorGetNumberOfComponents(CGColorRef color) {
  const Gate gate(__func__);
  standin::graphics::check(__func__, color, Kind::CGColor);
  return gate.fails() ? 0 : std::size(color->components);
}

const CGFloat* CGColorGetComponents(CGColorRef color) {
  const Gate gate(__func__);
  standin::graphics::check(__func__, color, Kind::CGColor);
  return gate.fails() ? nullptr : color->components;
}
