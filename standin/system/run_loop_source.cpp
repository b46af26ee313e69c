// Sources that fire because someone signalled them.
#include "standin/system/run_loop.h"

namespace {

using standin::Gate;
using standin::RunLoopInput;

class SignalledSource : public RunLoopInput {
 public:
  SignalledSource(CFRunLoopSourceRef owner, CFIndex order, const CFRunLoopSourceContext& context)
      : RunLoopInput(owner, Kind::Source, order), context_(context) {
    if (context_.retain) context_.info = const_cast<void*>(context_.retain(context_.info));
  }
  ~SignalledSource() override {
    if (context_.release) context_.release(context_.info);
  }

  double due() const override { return signalled_ ? 0 : standin::kNever; }
  void fire(short) override {
    signalled_ = false;
    standin::Callout callout;
    context_.perform(context_.info);
  }
  void signal() override { signalled_ = true; }

 private:
  CFRunLoopSourceContext context_;
  bool signalled_ = false;
};

CFRunLoopSourceRef sourceOf(CFTypeRef cf) {
  return const_cast<CFRunLoopSourceRef>(static_cast<const __CFRunLoopSource*>(cf));
}

// Run loops retain their sources: one that is freed is in none of them.
void finalizeSource(CFTypeRef cf) {
  delete sourceOf(cf)->input;
}

const CFRuntimeClass kSourceClass = {0,       "CFRunLoopSource", nullptr, nullptr, finalizeSource, nullptr,
                                     nullptr, nullptr,           nullptr, nullptr, nullptr};

CFTypeID sourceType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kSourceClass);
  return type;
}

RunLoopInput& checkedSource(const char* call, CFRunLoopSourceRef source) {
  standin::checkObject(call, source, sourceType(), "source");
  return *source->input;
}

}  // namespace

CFRunLoopSourceRef standin::makeSource(CFAllocatorRef allocator) {
  return makeObject<__CFRunLoopSource>(allocator, sourceType());
}

CFTypeID CFRunLoopSourceGetTypeID(void) {
  Gate gate{"CFRunLoopSourceGetTypeID"};
  return sourceType();
}

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context) {
  constexpr const char* kCall = "CFRunLoopSourceCreate";
  Gate gate{kCall};
  if (!context) standin::die(kCall, "the context is null");
  if (context->version != 0) standin::die(kCall, "the context's version isn't 0");
  if (!context->perform) standin::die(kCall, "the context's perform callback is null");
  if (context->schedule || context->cancel) standin::die(kCall, "schedule and cancel are never called here");
  const CFRunLoopSourceRef source = gate.fails() ? nullptr : standin::makeSource(allocator);
  if (source) source->input = new SignalledSource(source, order, *context);
  return source;
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef source) {
  constexpr const char* kCall = "CFRunLoopSourceSignal";
  Gate gate{kCall};
  RunLoopInput& input = checkedSource(kCall, source);
  if (!gate.fails()) input.signal();
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source) {
  constexpr const char* kCall = "CFRunLoopSourceInvalidate";
  Gate gate{kCall};  // it never fails, for the same reason as a removal
  checkedSource(kCall, source);
  CFRetain(source);
  source->input->invalidate();
  CFRelease(source);
}

Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef source) {
  constexpr const char* kCall = "CFRunLoopSourceIsValid";
  Gate gate{kCall};
  return checkedSource(kCall, source).valid() && !gate.fails();
}
