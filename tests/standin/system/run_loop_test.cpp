// Run loops: sources, timers and descriptors. The clock is the tests': none of them waits.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>
#include <thread>

#include "standin/system/clock.h"
#include "tests/support/owned.h"
#include "tests/support/texts.h"

namespace {

using Act = std::function<void()>;

void performAct(void* info) {
  (*static_cast<Act*>(info))();
}
void fireAct(CFRunLoopTimerRef, void* info) {
  (*static_cast<Act*>(info))();
}
void readableAct(CFFileDescriptorRef, CFOptionFlags, void* info) {
  (*static_cast<Act*>(info))();
}

class RunLoop : public testing::Test {
 protected:
  RunLoop() { standin::holdClock(); }
  ~RunLoop() override {
    standin::releaseClock();
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  // In the default mode of this thread's loop. `act` is borrowed.
  Owned<CFRunLoopSourceRef> addSource(Act& act, CFIndex order = 0) const {
    CFRunLoopSourceContext context{};
    context.info = &act;
    context.perform = performAct;
    Owned source(CFRunLoopSourceCreate(kCFAllocatorDefault, order, &context));
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
    return source;
  }
  Owned<CFRunLoopTimerRef> addTimer(Act& act, double delay, double interval = 0) const {
    CFRunLoopTimerContext context{};
    context.info = &act;
    Owned timer(CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + delay, interval, 0, 0,
                                     fireAct, &context));
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer.get(), kCFRunLoopDefaultMode);
    return timer;
  }
  static void invalidate(const Owned<CFRunLoopSourceRef>& source) { CFRunLoopSourceInvalidate(source.get()); }
  static void invalidate(const Owned<CFRunLoopTimerRef>& timer) { CFRunLoopTimerInvalidate(timer.get()); }
  static SInt32 run(double seconds, bool returnAfterSource = false) {
    return CFRunLoopRunInMode(kCFRunLoopDefaultMode, seconds, returnAfterSource);
  }

  std::vector<std::string> heard;
  Act hearA = [this] { heard.push_back("a"); };
  Act hearB = [this] { heard.push_back("b"); };
};

TEST_F(RunLoop, IsOneForEachThread) {
  const CFRunLoopRef here = CFRunLoopGetCurrent();
  EXPECT_EQ(here, CFRunLoopGetCurrent());
  EXPECT_EQ(CFGetTypeID(here), CFRunLoopGetTypeID());
  CFRunLoopRef there = nullptr;
  std::thread([&] { there = CFRunLoopGetCurrent(); }).join();
  EXPECT_NE(here, there);
}

TEST_F(RunLoop, FinishesAtOnceWithNothingToWaitFor) {
  EXPECT_EQ(run(5), kCFRunLoopRunFinished);
  const auto source = addSource(hearA);
  EXPECT_EQ(CFRunLoopRunInMode(CFSTR("another mode"), 5, false), kCFRunLoopRunFinished);
  invalidate(source);
  EXPECT_EQ(run(5), kCFRunLoopRunFinished);
}

TEST_F(RunLoop, TimesOutWhenNothingHappens) {
  const auto source = addSource(hearA);
  const double before = standin::clockTime();
  EXPECT_EQ(run(5), kCFRunLoopRunTimedOut);
  EXPECT_DOUBLE_EQ(standin::clockTime() - before, 5);
  EXPECT_EQ(run(0), kCFRunLoopRunTimedOut);
  EXPECT_EQ(run(-1), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{});
  invalidate(source);
}

TEST_F(RunLoop, PerformsASourceOnceForAllSignalsBefore) {
  const auto source = addSource(hearA);
  CFRunLoopSourceSignal(source.get());
  CFRunLoopSourceSignal(source.get());
  EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{"a"});
  invalidate(source);
}

TEST_F(RunLoop, PerformsSourcesOfOneModeAlone) {
  const auto source = addSource(hearA);
  CFRunLoopSourceSignal(source.get());
  const auto other = addSource(hearB);
  CFRunLoopRemoveSource(CFRunLoopGetCurrent(), other.get(), kCFRunLoopDefaultMode);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), other.get(), CFSTR("another mode"));
  CFRunLoopSourceSignal(other.get());
  run(0);
  EXPECT_EQ(heard, Texts{"a"});
  EXPECT_EQ(CFRunLoopRunInMode(CFSTR("another mode"), 0, true), kCFRunLoopRunHandledSource);
  EXPECT_EQ(heard, (Texts{"a", "b"}));
  invalidate(source);
  invalidate(other);
}

TEST_F(RunLoop, PerformsSourcesInTheirOrder) {
  const auto late = addSource(hearA, 5);
  const auto early = addSource(hearB, -5);
  CFRunLoopSourceSignal(late.get());
  CFRunLoopSourceSignal(early.get());
  run(0);
  EXPECT_EQ(heard, (Texts{"b", "a"}));
  invalidate(late);
  invalidate(early);
}

TEST_F(RunLoop, ReturnsAfterASourceWhenAskedTo) {
  const auto source = addSource(hearA);
  const auto timer = addTimer(hearB, 1);
  CFRunLoopSourceSignal(source.get());
  EXPECT_EQ(run(5, true), kCFRunLoopRunHandledSource);
  EXPECT_EQ(run(5, true), kCFRunLoopRunTimedOut);  // a timer is no source
  EXPECT_EQ(heard, (Texts{"a", "b"}));
  invalidate(source);
}

TEST_F(RunLoop, StopsTheInnermostRun) {
  SInt32 inner = 0;
  Act stop = [] { CFRunLoopStop(CFRunLoopGetCurrent()); };
  const auto stopper = addSource(stop);
  Act nest = [&] {
    CFRunLoopSourceSignal(stopper.get());
    inner = run(5);
  };
  const auto nester = addSource(nest);
  CFRunLoopSourceSignal(nester.get());
  EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
  EXPECT_EQ(inner, kCFRunLoopRunStopped);
  CFRunLoopSourceSignal(stopper.get());
  EXPECT_EQ(run(1), kCFRunLoopRunStopped);
  invalidate(stopper);
  invalidate(nester);
}

TEST_F(RunLoop, ForgetsAStopThatNoRunWasThereFor) {
  const auto source = addSource(hearA);
  CFRunLoopStop(CFRunLoopGetCurrent());
  EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
  invalidate(source);
}

TEST_F(RunLoop, PerformsASourceNoMoreThatWasMadeInvalidBeforeItsTurn) {
  Owned<CFRunLoopSourceRef> second;
  Act end = [&] { CFRunLoopSourceInvalidate(second.get()); };
  const auto first = addSource(end);
  second = addSource(hearB);
  CFRunLoopSourceSignal(first.get());
  CFRunLoopSourceSignal(second.get());
  run(0);
  EXPECT_EQ(heard, Texts{});
  EXPECT_FALSE(CFRunLoopSourceIsValid(second.get()));
  EXPECT_TRUE(CFRunLoopSourceIsValid(first.get()));
  CFRunLoopAddSource(CFRunLoopGetCurrent(), second.get(), kCFRunLoopDefaultMode);
  run(0);
  EXPECT_EQ(heard, Texts{});
  invalidate(first);
}

TEST_F(RunLoop, LetsASourceReleaseItselfWhileItIsPerformed) {
  Owned<CFRunLoopSourceRef> source;
  Act end = [&] {
    CFRunLoopSourceInvalidate(source.get());
    source = Owned<CFRunLoopSourceRef>();
    heard.push_back("released");
  };
  source = addSource(end);
  CFRunLoopSourceSignal(source.get());
  EXPECT_EQ(run(0), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{"released"});
}

TEST_F(RunLoop, StaysUsableWhenASourceThrows) {
  Act fail = [] { throw std::runtime_error("from a source"); };
  const auto source = addSource(fail);
  CFRunLoopSourceSignal(source.get());
  EXPECT_THROW(run(1), std::runtime_error);
  const auto other = addSource(hearA);
  CFRunLoopSourceSignal(other.get());
  EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{"a"});
  invalidate(source);
  invalidate(other);
}

TEST_F(RunLoop, FiresATimerWhenItsTimeHasCome) {
  const auto timer = addTimer(hearA, 2);
  EXPECT_EQ(run(1), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{});
  standin::advanceClock(1.5);
  EXPECT_TRUE(CFRunLoopTimerIsValid(timer.get()));
  EXPECT_EQ(run(0), kCFRunLoopRunTimedOut);
  EXPECT_EQ(heard, Texts{"a"});
  EXPECT_FALSE(CFRunLoopTimerIsValid(timer.get()));
  EXPECT_EQ(run(5), kCFRunLoopRunFinished);
}

TEST_F(RunLoop, FiresARepeatingTimerAtItsIntervalsAndOnceForThoseThatWereMissed) {
  const auto timer = addTimer(hearA, 1, 1);
  run(3.5);
  EXPECT_EQ(heard.size(), 3u);
  standin::advanceClock(10);
  run(0.1);
  EXPECT_EQ(heard.size(), 4u);
  run(1);
  EXPECT_EQ(heard.size(), 5u);
  invalidate(timer);
}

TEST_F(RunLoop, FiresATimerAtTheDateItWasGivenLast) {
  const auto timer = addTimer(hearA, 1);
  CFRunLoopTimerSetNextFireDate(timer.get(), CFAbsoluteTimeGetCurrent() + 10);
  run(5);
  EXPECT_EQ(heard, Texts{});
  run(6);
  EXPECT_EQ(heard, Texts{"a"});
}

TEST_F(RunLoop, GoesByTheSystemsClockUnlessATestHasTakenOver) {
  standin::releaseClock();
  const double before = standin::clockTime();
  const auto timer = addTimer(hearA, 0.002);
  while (heard.empty()) run(10, false);
  EXPECT_GE(standin::clockTime() - before, 0.001);
}

TEST_F(RunLoop, ReadsADescriptorOnceForEachTimeItIsEnabled) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  CFFileDescriptorContext context{};
  context.info = &hearA;
  const Owned descriptor(CFFileDescriptorCreate(kCFAllocatorDefault, ends[0], true, readableAct, &context));
  const Owned source(CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, descriptor.get(), 0));
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
  ASSERT_EQ(::write(ends[1], "x", 1), 1);
  run(1);
  EXPECT_EQ(heard, Texts{});
  CFFileDescriptorEnableCallBacks(descriptor.get(), kCFFileDescriptorReadCallBack);
  EXPECT_EQ(run(1, true), kCFRunLoopRunHandledSource);
  EXPECT_EQ(heard, Texts{"a"});
  run(1);
  EXPECT_EQ(heard, Texts{"a"});
  CFFileDescriptorEnableCallBacks(descriptor.get(), kCFFileDescriptorReadCallBack);
  run(1);
  EXPECT_EQ(heard, (Texts{"a", "a"}));
  CFFileDescriptorInvalidate(descriptor.get());
  EXPECT_FALSE(CFRunLoopSourceIsValid(source.get()));
  EXPECT_EQ(::close(ends[0]), -1);  // invalidating closed it
  ::close(ends[1]);
}

TEST_F(RunLoop, TellsWhenADescriptorCanBeWritten) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  CFFileDescriptorContext context{};
  context.info = &hearB;
  const Owned descriptor(CFFileDescriptorCreate(kCFAllocatorDefault, ends[1], false, readableAct, &context));
  const Owned source(CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, descriptor.get(), 0));
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source.get(), kCFRunLoopDefaultMode);
  CFFileDescriptorEnableCallBacks(descriptor.get(), kCFFileDescriptorWriteCallBack);
  run(0);
  EXPECT_EQ(heard, Texts{"b"});
  CFFileDescriptorInvalidate(descriptor.get());
  EXPECT_EQ(::close(ends[0]), 0);
  EXPECT_EQ(::close(ends[1]), 0);
}

TEST_F(RunLoop, LetsGoOfItsSourcesWhenItsThreadEnds) {
  Owned<CFRunLoopSourceRef> source;
  std::thread([&] {
    source = addSource(hearA);
    EXPECT_EQ(CFGetRetainCount(source.get()), 2);
  }).join();
  EXPECT_EQ(CFGetRetainCount(source.get()), 1);
  CFRunLoopSourceSignal(source.get());
  CFRunLoopSourceInvalidate(source.get());
  EXPECT_EQ(heard, Texts{});
}

TEST_F(RunLoop, CountsTheCallsOfItsSourcesAsCallsFromOutside) {
  Act act = [] { CFRunLoopGetCurrent(); };
  const auto source = addSource(act);
  CFRunLoopSourceSignal(source.get());
  standin::startLog();
  run(0);
  EXPECT_EQ(standin::stopLog(), (Texts{"CFRunLoopRunInMode", "CFRunLoopGetCurrent"}));
  invalidate(source);
}

using RunLoopDeathTest = RunLoop;

TEST_F(RunLoopDeathTest, EndsTheProcessForWhatIsNoSourceOrHasNoCallback) {
  const auto text = makeString("no source");
  const auto wrong = reinterpret_cast<CFRunLoopSourceRef>(const_cast<__CFString*>(text.get()));
  EXPECT_DEATH(CFRunLoopSourceSignal(nullptr), "CFRunLoopSourceSignal: the source is null");
  EXPECT_DEATH(CFRunLoopSourceSignal(wrong), "CFRunLoopSourceSignal: this is no source");
  CFRunLoopSourceContext context{};
  EXPECT_DEATH(CFRunLoopSourceCreate(nullptr, 0, &context), "perform callback is null");
  EXPECT_DEATH(CFRunLoopTimerCreate(nullptr, 0, 0, 0, 0, nullptr, nullptr), "the callback is null");
  EXPECT_DEATH(CFFileDescriptorCreate(nullptr, -1, false, readableAct, nullptr), "the descriptor is below 0");
  EXPECT_DEATH(CFRunLoopRunInMode(nullptr, 0, false), "the mode is null");
  standin::releaseClock();
  EXPECT_DEATH(standin::advanceClock(1), "the clock isn't held");
}

TEST_F(RunLoop, SkipsTimeOnlyWhileItsClockIsHeld) {
  EXPECT_LT(standin::timeSkipped(), 1);
  standin::advanceClock(1000);
  EXPECT_NEAR(standin::timeSkipped(), 1000, 10);
  standin::holdClock();
  EXPECT_NEAR(standin::timeSkipped(), 1000, 10);
  standin::releaseClock();
  EXPECT_EQ(standin::timeSkipped(), 0);
  standin::holdClock();
  EXPECT_LT(standin::timeSkipped(), 1);
}

}  // namespace
