// The functions that pass through the gate, most of them from a list (ListFunctions.cmake). By hand those
// that can't fail, that answer something else than 0 when they do, or that call back; and what isn't a call.
#include <CoreFoundation/CoreFoundation.h>
#include <dlfcn.h>

#include "standin/corefoundation/CFRuntime.h"
#include "tests/foreign/passage.h"

namespace foreign {

void* findOriginal(const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (!found) standin::die(name, "the other Core Foundation lacks it");
  return found;
}

namespace {

// A function that was handed to a collection, and what it runs in: its calls count, unless the outermost call
// is that of a stand-in library, whose own function it then is. All of it lies with the call, and little of
// that: a thousand levels of dictionaries fit in half a megabyte of stack, with all that calls from one to
// the next.
template <class Function>
class Applied {
 public:
  Applied(Function function, void* context) : function_(function), context_(context) {}
  // Also when an exception of the function's passes through the library.
  ~Applied() { goBack(); }
  Applied(const Applied&) = delete;
  Applied& operator=(const Applied&) = delete;

  template <class... Values>
  void call(Values... values) {
    if (isOutside()) standin::gateState.depth = 0;
    depthBehind = kNoCall;
    function_(values..., context_);
    goBack();
  }

 private:
  bool isOutside() const { return outermost_[0] == 'C' && outermost_[1] == 'F'; }
  void goBack() const {
    standin::gateState.depth = depth_;
    standin::gateState.outermost = outermost_;
    depthBehind = depth_;
  }

  const Function function_;
  void* const context_;
  const int depth_ = standin::gateState.depth;
  const char* const outermost_ = standin::gateState.outermost;
};
typedef Applied<CFArrayApplierFunction> AppliedToValues;
typedef Applied<CFDictionaryApplierFunction> AppliedToPairs;

void applyToValue(const void* value, void* applied) {
  static_cast<AppliedToValues*>(applied)->call(value);
}

void applyToPair(const void* key, const void* value, void* applied) {
  static_cast<AppliedToPairs*>(applied)->call(key, value);
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
  const foreign::Behind behind;
  foreign::AppliedToValues applied(applier, context);
  original.named(__func__)(theArray, range, foreign::applyToValue, &applied);
}

void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context) {
  static constinit foreign::Original<decltype(CFDictionaryApplyFunction)> original;
  const Gate gate(__func__);
  if (gate.fails()) return;
  const foreign::Behind behind;
  foreign::AppliedToPairs applied(applier, context);
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
