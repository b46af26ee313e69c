#include "standin/applicationservices/instances.h"

#include <array>
#include <string>

#include "standin/applicationservices/color_class.h"

namespace standin::graphics {
namespace {

// In the order of Kind.
constexpr CFRuntimeClass kClasses[] = {
    {.className = "CGColorSpace"},     kColorClass,
    {.className = "CGImage"},          {.className = "CGLayer"},
    {.className = "CGPath"},           {.className = "CGDataConsumer"},
    {.className = "CGDataProvider"},   {.className = "CGPSConverter"},
    {.className = "CGContext"},        {.className = "CGEvent"},
    {.className = "CGEventSource"},    {.className = "CGFont"},
    {.className = "CTFont"},           {.className = "CTFontCollection"},
    {.className = "CTFrame"},          {.className = "CTFramesetter"},
    {.className = "CTGlyphInfo"},      {.className = "CTLine"},
    {.className = "CTParagraphStyle"}, {.className = "CTRun"},
    {.className = "CTTypesetter"},     {.className = "CTRunDelegate"},
};
static_assert(std::size(kClasses) == kKinds);

const CFRuntimeClass& classOf(Kind kind) {
  return kClasses[static_cast<int>(kind)];
}

}  // namespace

CFTypeID typeOf(Kind kind) {
  static std::array<CFTypeID, kKinds> types{};
  CFTypeID& type = types[static_cast<size_t>(kind)];
  if (type == 0) type = _CFRuntimeRegisterClass(&classOf(kind));
  return type;
}

const char* nameOf(Kind kind) {
  return classOf(kind).className;
}

void* makeObject(Kind kind, CFIndex extraBytes) {
  return const_cast<void*>(_CFRuntimeCreateInstance(kCFAllocatorDefault, typeOf(kind), extraBytes, nullptr));
}

void check(const char* call, CFTypeRef cf, Kind kind) {
  if (!cf) die(call, std::string("null where a ") + nameOf(kind) + " is needed");
  if (CFGetTypeID(cf) != typeOf(kind)) die(call, std::string("this is no ") + nameOf(kind));
}

void retain(const char* call, CFTypeRef cf, Kind kind) {
  if (!cf) return;
  check(call, cf, kind);
  CFRetain(cf);
}

}  // namespace standin::graphics
