// The functions that all the types share: each type's identifier, the retain functions of those that have one
// of their own, and the simplest creators.
#include "standin/applicationservices/instances.h"

using standin::Gate;
using standin::graphics::Kind;
using standin::graphics::makeObject;

#define TYPE(type)                                                   \
  CFTypeID type##GetTypeID(void) {                                   \
    const Gate gate(__func__);                                       \
    return gate.fails() ? 0 : standin::graphics::typeOf(Kind::type); \
  }

#define TYPE_WITH_RETAIN(type)                               \
  TYPE(type)                                                 \
  type##Ref type##Retain(type##Ref object) {                 \
    const Gate gate(__func__);                               \
    standin::graphics::retain(__func__, object, Kind::type); \
    return object;                                           \
  }

TYPE_WITH_RETAIN(CGColorSpace)
TYPE_WITH_RETAIN(CGColor)
TYPE_WITH_RETAIN(CGImage)
TYPE_WITH_RETAIN(CGLayer)
TYPE_WITH_RETAIN(CGPath)
TYPE_WITH_RETAIN(CGDataConsumer)
TYPE_WITH_RETAIN(CGDataProvider)
TYPE_WITH_RETAIN(CGContext)
TYPE_WITH_RETAIN(CGFont)
TYPE(CGPSConverter)
TYPE(CGEvent)
TYPE(CGEventSource)
TYPE(CTFont)
TYPE(CTFontCollection)
TYPE(CTFrame)
TYPE(CTFramesetter)
TYPE(CTGlyphInfo)
TYPE(CTLine)
TYPE(CTParagraphStyle)
TYPE(CTRun)
TYPE(CTTypesetter)
TYPE(CTRunDelegate)

CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void) {
  const Gate gate(__func__);
  return gate.fails() ? nullptr : static_cast<CGColorSpaceRef>(makeObject(Kind::CGColorSpace));
}

CGMutablePathRef CGPathCreateMutable(void) {
  const Gate gate(__func__);
  return gate.fails() ? nullptr : static_cast<CGMutablePathRef>(makeObject(Kind::CGPath));
}
