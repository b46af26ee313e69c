// The public functions of run loops.
#include <cmath>

#include "standin/gate/gate.h"
#include "standin/system/objects.h"
#include "standin/system/run_loop/engine.h"
#include "standin/system/run_loop/source.h"
#include "standin/system/run_loop/timer.h"

struct __CFRunLoop {
  CFRuntimeBase base;
  standin::RunLoop* loop;
};

namespace {

using standin::Gate;

void finalizeRunLoop(CFTypeRef cf) {
  delete static_cast<const __CFRunLoop*>(cf)->loop;
}

const CFRuntimeClass kRunLoopClass = {.className = "CFRunLoop", .finalize = finalizeRunLoop};

CFTypeID runLoopType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kRunLoopClass);
  return type;
}

// The run loop of a thread lives as long as the thread, so it is nobody's leak and stays out of the ledger.
class LoopOfThread {
 public:
  LoopOfThread() {
    const Unlisted unlisted;
    loop_ = standin::makeObject<__CFRunLoop>(kCFAllocatorDefault, runLoopType());
    loop_->loop = new standin::RunLoop;
  }
  ~LoopOfThread() {
    const Gate gate("CFRunLoop");
    const Unlisted unlisted;
    CFRelease(loop_);
  }
  CFRunLoopRef get() const { return loop_; }

 private:
  struct Unlisted {
    ~Unlisted() { line = before; }
    long& line = standin::ledgerLine("CFRunLoop");
    const long before = line;
  };
  CFRunLoopRef loop_;
};

CFRunLoopRef currentLoop() {
  static thread_local LoopOfThread loop;
  return loop.get();
}

standin::RunLoop& checkedLoop(const char* call, CFRunLoopRef loop) {
  standin::checkObject(call, loop, runLoopType(), "run loop");
  return *loop->loop;
}

void checkMode(const char* call, CFStringRef mode) {
  standin::checkObject(call, mode, CFStringGetTypeID(), "mode");
}

}  // namespace

const CFStringRef kCFRunLoopDefaultMode = CFSTR("kCFRunLoopDefaultMode");

CFTypeID CFRunLoopGetTypeID(void) {
  const Gate gate(__func__);
  return runLoopType();
}

CFRunLoopRef CFRunLoopGetCurrent(void) {
  const Gate gate(__func__);  // never fails: every thread has one
  return currentLoop();
}

SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled) {
  const Gate gate(__func__);
  checkMode(__func__, mode);
  if (std::isnan(seconds)) standin::die(__func__, "the time is no number");
  if (gate.fails()) return kCFRunLoopRunFinished;
  return currentLoop()->loop->run(mode, seconds, returnAfterSourceHandled);
}

// Ends the innermost run of the loop once the input that is firing is done.
void CFRunLoopStop(CFRunLoopRef rl) {
  const Gate gate(__func__);
  standin::RunLoop& loop = checkedLoop(__func__, rl);
  if (!gate.fails()) loop.stop();
}

void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFStringRef mode) {
  const Gate gate(__func__);
  standin::RunLoop& loop = checkedLoop(__func__, rl);
  standin::RunLoopInput& input = standin::checkedSource(__func__, source);
  checkMode(__func__, mode);
  if (!gate.fails()) loop.add(input, mode);
}

void CFRunLoopRemoveSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFStringRef mode) {
  const Gate gate(__func__);  // never fails: if a removal were left out, what is gone would be called
  standin::RunLoop& loop = checkedLoop(__func__, rl);
  standin::RunLoopInput& input = standin::checkedSource(__func__, source);
  checkMode(__func__, mode);
  loop.remove(input, mode);
}

void CFRunLoopAddTimer(CFRunLoopRef rl, CFRunLoopTimerRef timer, CFStringRef mode) {
  const Gate gate(__func__);
  standin::RunLoop& loop = checkedLoop(__func__, rl);
  standin::RunLoopInput& input = standin::checkedTimer(__func__, timer);
  checkMode(__func__, mode);
  if (!gate.fails()) loop.add(input, mode);
}
