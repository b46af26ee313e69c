// Objects of the graphics and text types. All but colours are empty: what they are good for on the Mac isn't
// needed here, only that they are there, have a type and are owned.
#pragma once

#include "standin/applicationservices/services.h"
#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

namespace standin::graphics {

enum class Kind {
  CGColorSpace,
  CGColor,
  CGImage,
  CGLayer,
  CGPath,
  CGDataConsumer,
  CGDataProvider,
  CGPSConverter,
  CGContext,
  CGEvent,
  CGEventSource,
  CGFont,
  CTFont,
  CTFontCollection,
  CTFrame,
  CTFramesetter,
  CTGlyphInfo,
  CTLine,
  CTParagraphStyle,
  CTRun,
  CTTypesetter,
  CTRunDelegate,
};
inline constexpr int kKinds = static_cast<int>(Kind::CTRunDelegate) + 1;

// Registered with the runtime when it is first asked for. 0 when the runtime takes no more classes.
CFTypeID typeOf(Kind kind);

// The name that the class is registered by.
const char* nameOf(Kind kind);

// A new object, the caller's, `extraBytes` of zeros behind its CFRuntimeBase; null when there is no memory.
void* makeObject(Kind kind, CFIndex extraBytes = 0);

// Ends the process in the name of `call` when `cf` isn't an object of this kind.
void check(const char* call, CFTypeRef cf, Kind kind);

// What every retain function of Core Graphics does: null is allowed, and a retain can't fail.
void retain(const char* call, CFTypeRef cf, Kind kind);

}  // namespace standin::graphics
