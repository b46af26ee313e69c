// The class of colours, without the functions that make and read them.
#pragma once

#include "standin/applicationservices/services.h"
#include "standin/corefoundation/CFRuntime.h"

struct CGColor {
  CFRuntimeBase base;
  CGFloat components[4];  // red, green, blue and alpha of the generic RGB space
};

namespace standin::graphics {

Boolean equalColors(CFTypeRef a, CFTypeRef b);
CFHashCode hashColor(CFTypeRef cf);

inline constexpr CFRuntimeClass kColorClass = {
    .className = "CGColor", .equal = equalColors, .hash = hashColor};

}  // namespace standin::graphics
