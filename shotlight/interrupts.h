// Ctrl-C, and being told to end.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <csignal>
#include <cstdint>

namespace shotlight {

// While one is alive, SIGINT and SIGTERM don't end the program: they stop the run of this thread's run loop
// and are remembered.
class Interrupts {
 public:
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // The number of the signal that came first, 0 before any. Needs no run of the run loop.
  int signal();
  // The same, some milliseconds late at the most: for loops that ask often, and would wait for the system.
  int recentSignal();

 private:
  static void wake(CFFileDescriptorRef descriptor, CFOptionFlags types, void* self);

  sigset_t before_;
  int fd_;
  int signal_ = 0;
  int64_t asked_ = 0;  // when recentSignal last asked the system, in milliseconds of its clock
  CFFileDescriptorRef descriptor_;
  CFRunLoopSourceRef source_;
};

}  // namespace shotlight
