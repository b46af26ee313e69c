// The functions that pass through the gate, most of them from a list (ListFunctions.cmake). By hand those
// that can't fail, that answer something else than 0 when they do, or that call back; and what isn't a call.
#include <CoreFoundation/CoreFoundation.h>
#include <dlfcn.h>

#include <cstring>
#include <optional>

#include "standin/corefoundation/CFRuntime.h"
#include "tests/foreign/passage.h"

namespace foreign {

void* findOriginal(const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (!found) standin::die(name, "the other Core Foundation lacks it");
  return found;
}

namespace {

// A function that was handed to a collection. If the outermost call is that of a stand-in library, the
// function is that library's own, and its calls don't count.
class OutsideCall {
 public:
  OutsideCall() {
    if (std::strncmp(standin::currentCall(), "CF", 2) == 0) callout_.emplace();
  }

 private:
  std::optional<standin::Callout> callout_;
};

template <class Function>
struct Applied {
  Function function;
  void* context;
};

void applyToValue(const void* value, void* context) {
  const auto& applied = *static_cast<const Applied<CFArrayApplierFunction>*>(context);
  const CalledBack calledBack;
  const OutsideCall outside;
  applied.function(value, applied.context);
}

void applyToPair(const void* key, const void* value, void* context) {
  const auto& applied = *static_cast<const Applied<CFDictionaryApplierFunction>*>(context);
  const CalledBack calledBack;
  const OutsideCall outside;
  applied.function(key, value, applied.context);
}

}  // namespace
}  // namespace foreign

using standin::Gate;

#include "foreign_functions.inc"

// To the platform's compiler a constant string is data, not a call: nor is anything that is called for it.
CFStringRef __CFStringMakeConstantString(const char* cStr) {
  static constinit foreign::Original<decltype(__CFStringMakeConstantString)> original;
  const standin::Inside inside(__func__);
  const foreign::Behind behind;
  return original.named(__func__)(cStr);
}

// A reference is taken and given back even when this call was chosen to fail.
CFTypeRef CFRetain(CFTypeRef cf) {
  static constinit foreign::Original<decltype(CFRetain)> original;
  const Gate gate(__func__);
  const foreign::Behind behind;
  return original.named(__func__)(cf);
}

void CFRelease(CFTypeRef cf) {
  static constinit foreign::Original<decltype(CFRelease)> original;
  Gate gate(__func__);
  if (standin::gateState.watched) gate.detail(foreign::kindOf(cf));
  const foreign::Behind behind;
  original.named(__func__)(cf);
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void* value) {
  static constinit foreign::Original<decltype(CFArrayGetFirstIndexOfValue)> original;
  const Gate gate(__func__);
  if (gate.fails()) return kCFNotFound;
  const foreign::Behind behind;
  return original.named(__func__)(theArray, range, value);
}

void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void* context) {
  static constinit foreign::Original<decltype(CFArrayApplyFunction)> original;
  const Gate gate(__func__);
  if (gate.fails()) return;
  foreign::Applied<CFArrayApplierFunction> applied = {applier, context};
  const foreign::Behind behind;
  original.named(__func__)(theArray, range, foreign::applyToValue, &applied);
}

void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context) {
  static constinit foreign::Original<decltype(CFDictionaryApplyFunction)> original;
  const Gate gate(__func__);
  if (gate.fails()) return;
  foreign::Applied<CFDictionaryApplierFunction> applied = {applier, context};
  const foreign::Behind behind;
  original.named(__func__)(theDict, foreign::applyToPair, &applied);
}

CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* cls) {
  static constinit foreign::Original<decltype(_CFRuntimeRegisterClass)> original;
  const Gate gate(__func__);
  if (gate.fails()) return 0;
  const CFTypeID type = original.named(__func__)(cls);
  if (type != 0) foreign::nameKind(type, cls->className);
  return type;
}
