// Timers. A fire date is an absolute time. When a timer is given one, it works out how long that is from now
// and waits for so long on the run loops' clock, even if the system's clock is changed meanwhile.
#include "standin/system/run_loop/timer.h"

#include <algorithm>
#include <cmath>

#include "standin/gate/gate.h"
#include "standin/system/clock.h"
#include "standin/system/objects.h"

using standin::Gate;
using standin::RunLoopInput;

namespace {

class Timer;

}  // namespace

struct __CFRunLoopTimer {
  CFRuntimeBase base;
  Timer* input;  // the timer's own
};

namespace {

CFRunLoopTimerRef timerOf(CFTypeRef cf) {
  return const_cast<CFRunLoopTimerRef>(static_cast<const __CFRunLoopTimer*>(cf));
}

class Timer : public RunLoopInput {
 public:
  Timer(CFRunLoopTimerRef owner, CFIndex order, double interval, CFRunLoopTimerCallBack callback,
        const CFRunLoopTimerContext& context)
      : RunLoopInput(owner, Kind::Timer, order), interval_(interval), callback_(callback), context_(context) {
    if (context_.retain) context_.info = const_cast<void*>(context_.retain(context_.info));
  }
  ~Timer() override {
    if (context_.release) context_.release(context_.info);
  }

  void setDate(CFAbsoluteTime date) { next_ = standin::clockTime() + (date - CFAbsoluteTimeGetCurrent()); }
  double due() const override { return next_; }
  // The caller keeps the owner alive. Times that were missed are left out.
  void fire(short) override {
    if (interval_ > 0) {
      const double late = std::max(standin::clockTime() - next_, 0.0);
      next_ += (std::floor(late / interval_) + 1) * interval_;
    } else {
      invalidate();
    }
    standin::Callout callout;
    callback_(timerOf(owner), context_.info);
  }

 private:
  double next_ = 0;
  const double interval_;
  const CFRunLoopTimerCallBack callback_;
  CFRunLoopTimerContext context_;
};

void finalizeTimer(CFTypeRef cf) {
  delete timerOf(cf)->input;
}

const CFRuntimeClass kTimerClass = {.className = "CFRunLoopTimer", .finalize = finalizeTimer};

CFTypeID timerType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kTimerClass);
  return type;
}

}  // namespace

RunLoopInput& standin::checkedTimer(const char* call, CFRunLoopTimerRef timer) {
  checkObject(call, timer, timerType(), "timer");
  return *timer->input;
}

CFTypeID CFRunLoopTimerGetTypeID(void) {
  const Gate gate(__func__);
  return timerType();
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags, CFIndex order,
                                       CFRunLoopTimerCallBack callout, CFRunLoopTimerContext* context) {
  const Gate gate(__func__);
  if (!callout) standin::die(__func__, "the callback is null");
  if (std::isnan(fireDate) || std::isnan(interval)) standin::die(__func__, "a time is no number");
  if (context && context->version != 0) standin::die(__func__, "the context's version isn't 0");
  if (gate.fails()) return nullptr;
  const CFRunLoopTimerRef timer = standin::makeObject<__CFRunLoopTimer>(allocator, timerType());
  if (!timer) return nullptr;
  auto* const input =
      new Timer(timer, order, interval, callout, context ? *context : CFRunLoopTimerContext{});
  input->setDate(fireDate);
  timer->input = input;
  return timer;
}

void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate) {
  const Gate gate(__func__);
  standin::checkedTimer(__func__, timer);
  if (std::isnan(fireDate)) standin::die(__func__, "the date is no number");
  if (!gate.fails()) timer->input->setDate(fireDate);
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer) {
  const Gate gate(__func__);  // never fails: a timer that went on would call what is gone
  standin::checkedTimer(__func__, timer);
  CFRetain(timer);
  timer->input->invalidate();
  CFRelease(timer);
}

Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef timer) {
  const Gate gate(__func__);
  return standin::checkedTimer(__func__, timer).valid() && !gate.fails();
}
