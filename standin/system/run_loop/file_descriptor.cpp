// File descriptors that a run loop waits for. A callback is called once and then has to be enabled again.
#include <unistd.h>

#include <utility>

#include "standin/gate/gate.h"
#include "standin/system/objects.h"
#include "standin/system/run_loop/source.h"

namespace {

struct Watched {
  int descriptor;
  bool closes;
  CFFileDescriptorCallBack callback;
  CFFileDescriptorContext context;
  CFOptionFlags enabled = 0;
  bool valid = true;
  CFRunLoopSourceRef source = nullptr;  // not retained: it retains this
};

}  // namespace

struct __CFFileDescriptor {
  CFRuntimeBase base;
  Watched* watched;
};

namespace {

using standin::Gate;
using standin::RunLoopInput;

CFFileDescriptorRef fileDescriptorOf(CFTypeRef cf) {
  return const_cast<CFFileDescriptorRef>(static_cast<const __CFFileDescriptor*>(cf));
}

class DescriptorSource : public RunLoopInput {
 public:
  DescriptorSource(CFRunLoopSourceRef owner, CFIndex order, CFFileDescriptorRef file)
      : RunLoopInput(owner, Kind::Source, order), file_(fileDescriptorOf(CFRetain(file))) {}
  ~DescriptorSource() override {
    file_->watched->source = nullptr;
    CFRelease(file_);
  }

  double due() const override { return standin::kNever; }
  pollfd interest() const override {
    const Watched& watched = *file_->watched;
    const int reads = watched.enabled & kCFFileDescriptorReadCallBack ? POLLIN : 0;
    const int writes = watched.enabled & kCFFileDescriptorWriteCallBack ? POLLOUT : 0;
    return {watched.enabled ? watched.descriptor : -1, static_cast<short>(reads | writes), 0};
  }
  void fire(short events) override {
    Watched& watched = *file_->watched;
    CFOptionFlags types = 0;
    if (events & ~POLLOUT) types |= kCFFileDescriptorReadCallBack;  // an error or an end is read, too
    if (events & ~POLLIN) types |= kCFFileDescriptorWriteCallBack;
    types &= watched.enabled;
    watched.enabled &= ~types;
    standin::Callout callout;
    watched.callback(file_, types, watched.context.info);
  }

 private:
  const CFFileDescriptorRef file_;
};

void invalidate(Watched& watched) {
  if (!std::exchange(watched.valid, false)) return;
  watched.enabled = 0;
  if (watched.source) CFRunLoopSourceInvalidate(watched.source);
  if (watched.closes) ::close(watched.descriptor);
  if (watched.context.release) watched.context.release(watched.context.info);
}

void finalizeFileDescriptor(CFTypeRef cf) {
  Watched* const watched = fileDescriptorOf(cf)->watched;
  invalidate(*watched);
  delete watched;
}

const CFRuntimeClass kFileDescriptorClass = {.className = "CFFileDescriptor",
                                             .finalize = finalizeFileDescriptor};

CFTypeID fileDescriptorType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kFileDescriptorClass);
  return type;
}

Watched& checkedFileDescriptor(const char* call, CFFileDescriptorRef file) {
  standin::checkObject(call, file, fileDescriptorType(), "file descriptor");
  return *file->watched;
}

}  // namespace

CFTypeID CFFileDescriptorGetTypeID(void) {
  const Gate gate(__func__);
  return fileDescriptorType();
}

CFFileDescriptorRef CFFileDescriptorCreate(CFAllocatorRef allocator, CFFileDescriptorNativeDescriptor fd,
                                           Boolean closeOnInvalidate, CFFileDescriptorCallBack callout,
                                           const CFFileDescriptorContext* context) {
  const Gate gate(__func__);
  if (fd < 0) standin::die(__func__, "the descriptor is below 0");
  if (!callout) standin::die(__func__, "the callback is null");
  if (context && context->version != 0) standin::die(__func__, "the context's version isn't 0");
  if (gate.fails()) return nullptr;
  const CFFileDescriptorRef file = standin::makeObject<__CFFileDescriptor>(allocator, fileDescriptorType());
  if (!file) return nullptr;
  file->watched =
      new Watched{fd, closeOnInvalidate != 0, callout, context ? *context : CFFileDescriptorContext{}};
  CFFileDescriptorContext& kept = file->watched->context;
  if (kept.retain) kept.info = kept.retain(kept.info);
  return file;
}

void CFFileDescriptorEnableCallBacks(CFFileDescriptorRef f, CFOptionFlags callBackTypes) {
  const Gate gate(__func__);
  Watched& watched = checkedFileDescriptor(__func__, f);
  if (!gate.fails() && watched.valid) watched.enabled |= callBackTypes;
}

void CFFileDescriptorInvalidate(CFFileDescriptorRef f) {
  const Gate gate(__func__);  // never fails: a callback that went on would be called for what is gone
  Watched& watched = checkedFileDescriptor(__func__, f);
  CFRetain(f);
  invalidate(watched);
  CFRelease(f);
}

// One source for a descriptor: asked again, the same.
CFRunLoopSourceRef CFFileDescriptorCreateRunLoopSource(CFAllocatorRef allocator, CFFileDescriptorRef f,
                                                       CFIndex order) {
  const Gate gate(__func__);
  Watched& watched = checkedFileDescriptor(__func__, f);
  if (gate.fails() || !watched.valid) return nullptr;
  if (watched.source) {
    CFRetain(watched.source);
    return watched.source;
  }
  const CFRunLoopSourceRef source = standin::makeSource(allocator);
  if (!source) return nullptr;
  source->input = new DescriptorSource(source, order, f);
  watched.source = source;
  return source;
}
