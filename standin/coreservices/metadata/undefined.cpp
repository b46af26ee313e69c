#include "standin/coreservices/metadata/undefined.h"

#include <utility>

#include "standin/coreservices/metadata/item.h"
#include "standin/gate/gate.h"

namespace standin {
namespace {

Undefined& chosen() {
  static Undefined answer = Undefined::Nothing;
  return answer;
}

// Made when it is first needed, and kept until something else is chosen.
CFTypeRef& item() {
  static CFTypeRef made = nullptr;
  return made;
}

bool isGarbage(const char* call, const std::string& what) {
  if (chosen() == Undefined::End) die(call, what + " is undefined");
  return chosen() == Undefined::Garbage;
}

}  // namespace

void setUndefined(Undefined answer) {
  chosen() = answer;
  if (const CFTypeRef unused = std::exchange(item(), nullptr)) CFRelease(unused);
}

CFTypeRef metadata::undefinedItem(const char* call, const std::string& what) {
  if (!isGarbage(call, what)) return nullptr;
  if (!item()) item() = createItem(kCFAllocatorDefault, "/undefined");
  return item();
}

CFTypeRef metadata::undefinedValue(const char* call, const std::string& what) {
  return isGarbage(call, what) ? CFSTR("undefined") : nullptr;
}

CFArrayRef metadata::copyUndefinedValues(const char* call, const std::string& what) {
  if (!isGarbage(call, what)) return nullptr;
  CFTypeRef value = CFSTR("undefined");
  return CFArrayCreate(kCFAllocatorDefault, &value, 1, &kCFTypeArrayCallBacks);
}

CFIndex metadata::undefinedCount(const char* call, const std::string& what) {
  constexpr CFIndex kGarbage = 1234567;
  return isGarbage(call, what) ? kGarbage : 0;
}

bool metadata::undefinedEffect(const char* call, const std::string& what) {
  return isGarbage(call, what);
}

}  // namespace standin
