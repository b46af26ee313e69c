#include "standin/system/run_loop/engine.h"

#include <algorithm>
#include <utility>

#include "standin/system/clock.h"

namespace standin {

void RunLoopInput::invalidate() {
  valid_ = false;
  while (!loops_.empty()) loops_.back()->removeFromAllModes(*this);
}

// An input that a pass of the loop looks at, kept alive until the pass is over.
struct RunLoop::Ready {
  explicit Ready(RunLoopInput* input) : input(input), owner(CFRetain(input->owner)) {}
  Ready(Ready&& other) noexcept
      : input(other.input), owner(std::exchange(other.owner, nullptr)), events(other.events) {}
  ~Ready() {
    if (owner) CFRelease(owner);
  }
  RunLoopInput* input;
  CFTypeRef owner;
  short events = 0;
};

RunLoop::~RunLoop() {
  while (!entries_.empty()) drop(entries_.size() - 1);
}

void RunLoop::add(RunLoopInput& input, CFStringRef mode) {
  if (!input.valid() || has(&input, mode)) return;
  CFRetain(input.owner);
  input.loops_.push_back(this);
  const auto place = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.input->order > input.order; });
  entries_.insert(place, {&input, CFStringCreateCopy(kCFAllocatorDefault, mode)});
}

void RunLoop::drop(size_t index) {
  const Entry entry = entries_[index];
  entries_.erase(entries_.begin() + static_cast<ptrdiff_t>(index));
  std::vector<RunLoop*>& loops = entry.input->loops_;
  loops.erase(std::find(loops.begin(), loops.end(), this));
  CFRelease(entry.mode);
  CFRelease(entry.input->owner);
}

void RunLoop::remove(RunLoopInput& input, CFStringRef mode) {
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].input == &input && CFEqual(entries_[i].mode, mode)) return drop(i);
  }
}

void RunLoop::removeFromAllModes(RunLoopInput& input) {
  for (size_t i = entries_.size(); i-- > 0;) {
    if (entries_[i].input == &input) drop(i);
  }
}

bool RunLoop::has(const RunLoopInput* input, CFStringRef mode) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const Entry& entry) { return entry.input == input && CFEqual(entry.mode, mode); });
}

std::vector<RunLoop::Ready> RunLoop::inputsOf(CFStringRef mode) const {
  std::vector<Ready> inputs;
  for (const Entry& entry : entries_) {
    if (CFEqual(entry.mode, mode)) inputs.emplace_back(entry.input);
  }
  return inputs;
}

// Waits for one or more inputs and fires them. Answers whether a source was among them.
bool RunLoop::pass(CFStringRef mode, double deadline) {
  std::vector<Ready> inputs = inputsOf(mode);
  std::vector<pollfd> descriptors;
  double until = deadline;
  for (const Ready& ready : inputs) {
    descriptors.push_back(ready.input->interest());
    until = std::min(until, ready.input->due());
  }
  waitOnClock(descriptors, until);
  const double now = clockTime();
  for (size_t i = 0; i < inputs.size(); ++i) inputs[i].events = descriptors[i].revents;
  bool firedSource = false;
  for (const Ready& ready : inputs) {
    // One that fired before may have made this one invalid, or taken it out, or stopped the loop.
    if (stopped_ || !has(ready.input, mode)) continue;
    if (ready.events == 0 && ready.input->due() > now) continue;
    firedSource |= ready.input->kind == RunLoopInput::Kind::Source;
    ready.input->fire(ready.events);
  }
  return firedSource;
}

SInt32 RunLoop::run(CFStringRef mode, double seconds, bool returnAfterSource) {
  struct Activation {
    explicit Activation(bool& stopped) : stopped(stopped), outer(std::exchange(stopped, false)) {}
    ~Activation() { stopped = outer; }
    bool& stopped;
    const bool outer;
  };
  const Activation activation(stopped_);
  const double deadline = clockTime() + std::max(seconds, 0.0);
  for (;;) {
    if (inputsOf(mode).empty()) return kCFRunLoopRunFinished;
    const bool firedSource = pass(mode, deadline);
    if (stopped_) return kCFRunLoopRunStopped;
    if (firedSource && returnAfterSource) return kCFRunLoopRunHandledSource;
    if (clockTime() >= deadline) return kCFRunLoopRunTimedOut;
  }
}

}  // namespace standin
