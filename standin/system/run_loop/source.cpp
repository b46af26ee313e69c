// Sources that fire because someone signalled them, and what all sources share.
#include "standin/system/run_loop/source.h"

#include "standin/gate/gate.h"
#include "standin/system/objects.h"

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

const CFRuntimeClass kSourceClass = {.className = "CFRunLoopSource", .finalize = finalizeSource};

CFTypeID sourceType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kSourceClass);
  return type;
}

}  // namespace

CFRunLoopSourceRef standin::makeSource(CFAllocatorRef allocator) {
  return makeObject<__CFRunLoopSource>(allocator, sourceType());
}

RunLoopInput& standin::checkedSource(const char* call, CFRunLoopSourceRef source) {
  checkObject(call, source, sourceType(), "source");
  return *source->input;
}

CFTypeID CFRunLoopSourceGetTypeID(void) {
  const Gate gate(__func__);
  return sourceType();
}

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context) {
  const Gate gate(__func__);
  if (!context) standin::die(__func__, "the context is null");
  if (context->version != 0) standin::die(__func__, "the context's version isn't 0");
  if (!context->perform) standin::die(__func__, "the context's perform callback is null");
  if (context->schedule || context->cancel)
    standin::die(__func__, "schedule and cancel are never called here");
  const CFRunLoopSourceRef source = gate.fails() ? nullptr : standin::makeSource(allocator);
  if (source) source->input = new SignalledSource(source, order, *context);
  return source;
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef source) {
  const Gate gate(__func__);
  RunLoopInput& input = standin::checkedSource(__func__, source);
  if (!gate.fails()) input.signal();
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source) {
  const Gate gate(__func__);  // never fails, for the same reason as a removal
  standin::checkedSource(__func__, source);
  CFRetain(source);
  source->input->invalidate();
  CFRelease(source);
}

Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef source) {
  const Gate gate(__func__);
  return standin::checkedSource(__func__, source).valid() && !gate.fails();
}
