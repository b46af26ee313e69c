// Timers. Fire dates are absolute times, on which the system's clock may be set anew; a timer waits for the
// time that lies between now and its date when it is told the date.
#include <cmath>

#include "standin/system/clock.h"
#include "standin/system/run_loop.h"

struct __CFRunLoopTimer {
  CFRuntimeBase base;
  standin::RunLoopInput* input;
};

namespace {

using standin::Gate;
using standin::RunLoopInput;

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
  // The caller keeps the owner alive. What was missed is not made up for.
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

const CFRuntimeClass kTimerClass = {0,       "CFRunLoopTimer", nullptr, nullptr, finalizeTimer, nullptr,
                                    nullptr, nullptr,          nullptr, nullptr, nullptr};

CFTypeID timerType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kTimerClass);
  return type;
}

Timer& checkedTimer(const char* call, CFRunLoopTimerRef timer) {
  standin::checkObject(call, timer, timerType(), "timer");
  return *static_cast<Timer*>(timer->input);
}

}  // namespace

standin::RunLoopInput& standin::inputOf(CFRunLoopTimerRef timer) {
  return *timer->input;
}

CFTypeID CFRunLoopTimerGetTypeID(void) {
  Gate gate{"CFRunLoopTimerGetTypeID"};
  return timerType();
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate,
                                       CFTimeInterval interval, CFOptionFlags, CFIndex order,
                                       CFRunLoopTimerCallBack callout, CFRunLoopTimerContext* context) {
  constexpr const char* kCall = "CFRunLoopTimerCreate";
  Gate gate{kCall};
  if (!callout) standin::die(kCall, "the callback is null");
  if (std::isnan(fireDate) || std::isnan(interval)) standin::die(kCall, "a time is no number");
  if (context && context->version != 0) standin::die(kCall, "the context's version isn't 0");
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
  constexpr const char* kCall = "CFRunLoopTimerSetNextFireDate";
  Gate gate{kCall};
  Timer& input = checkedTimer(kCall, timer);
  if (std::isnan(fireDate)) standin::die(kCall, "the date is no number");
  if (!gate.fails()) input.setDate(fireDate);
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer) {
  constexpr const char* kCall = "CFRunLoopTimerInvalidate";
  Gate gate{kCall};  // it never fails: a timer that went on would call what is gone
  checkedTimer(kCall, timer);
  CFRetain(timer);
  timer->input->invalidate();
  CFRelease(timer);
}

Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef timer) {
  constexpr const char* kCall = "CFRunLoopTimerIsValid";
  Gate gate{kCall};
  return checkedTimer(kCall, timer).valid() && !gate.fails();
}
