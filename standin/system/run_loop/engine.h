// What a run loop waits for and fires, and the loop itself, behind the public functions.
//
// This room has run loops with all that they wait for: the engine, above it the inputs (sources, timers, file
// descriptors), above these the public functions of the loops. It may include what standin/system may,
// and the files there; none of them includes it.
//
// A thread has one run loop, which goes away with the thread and forgets what was added to it. Like all
// stand-ins, run loops are used from one thread at a time: none can be woken from another.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <poll.h>

#include <limits>
#include <vector>

namespace standin {

class RunLoop;

inline constexpr double kNever = std::numeric_limits<double>::infinity();

// A source or a timer. It belongs to a Core Foundation object, `owner`, which run loops retain.
class RunLoopInput {
 public:
  enum class Kind { Source, Timer };

  RunLoopInput(CFTypeRef owner, Kind kind, CFIndex order) : owner(owner), kind(kind), order(order) {}
  virtual ~RunLoopInput() = default;
  RunLoopInput(const RunLoopInput&) = delete;
  RunLoopInput& operator=(const RunLoopInput&) = delete;

  virtual double due() const = 0;  // on the clock; kNever while nothing but its descriptor can make it fire
  virtual pollfd interest() const { return {-1, 0, 0}; }
  virtual void fire(short events) = 0;  // `events`: those of the descriptor
  virtual void signal() {}              // asks to be fired; without effect on what fires by itself

  bool valid() const { return valid_; }
  // It never fires again, and leaves the loops that it is in: the caller keeps the owner alive meanwhile.
  void invalidate();

  const CFTypeRef owner;  // not retained
  const Kind kind;
  const CFIndex order;  // those with smaller numbers fire first

 private:
  friend class RunLoop;
  bool valid_ = true;
  std::vector<RunLoop*> loops_;  // one entry for each mode
};

class RunLoop {
 public:
  RunLoop() = default;
  ~RunLoop();
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;

  void add(RunLoopInput& input, CFStringRef mode);  // once for each mode
  void remove(RunLoopInput& input, CFStringRef mode);
  void removeFromAllModes(RunLoopInput& input);
  SInt32 run(CFStringRef mode, double seconds, bool returnAfterSource);
  void stop() { stopped_ = true; }

 private:
  struct Entry {
    RunLoopInput* input;
    CFStringRef mode;
  };
  struct Ready;

  std::vector<Ready> inputsOf(CFStringRef mode) const;
  bool has(const RunLoopInput* input, CFStringRef mode) const;
  bool pass(CFStringRef mode, double deadline);
  void drop(size_t index);

  std::vector<Entry> entries_;  // by order
  bool stopped_ = false;        // the innermost run
};

}  // namespace standin
