// The class of colours.
#pragma once

#include "standin/corefoundation/CFRuntime.h"

namespace standin::graphics {

Boolean equalColors(CFTypeRef a, CFTypeRef b);
CFHashCode hashColor(CFTypeRef cf);

inline constexpr CFRuntimeClass kColorClass = {0,         "CGColor", nullptr, nullptr, nullptr, equalColors,
                                               hashColor, nullptr,   nullptr, nullptr, nullptr};

}  // namespace standin::graphics
