#include "standin/applicationservices/color_class.h"

#include <algorithm>

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
