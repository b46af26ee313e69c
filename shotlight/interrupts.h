// Ctrl-C, being told to end, and printing for nobody.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <csignal>
#include <optional>

namespace shotlight {

// While one is alive, SIGINT, SIGTERM and SIGHUP don't end the program at once: they stop the run of this
// thread's run loop and are remembered, so that the command can end in order. Where that takes longer than a
// moment, be it in a call that nothing interrupts, and for a second signal, the program ends all the same,
// also after this object is gone. A signal that the program was started to ignore stays ignored.
//
// When nobody reads the pipe any more that is standard output, it ends by SIGPIPE, as it would by printing.
//
// There is one at a time.
class Interrupts {
 public:
  Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  // The number of the signal that came first, 0 before any. Needs no run of the run loop.
  int signal() const;
  // Tells people, once, that the command was interrupted.
  void tell();
  // The command has done what it was to, with that status, and nothing is to be told any more.
  void setStatus(int status);

 private:
  // A descriptor that the run loop of this thread watches.
  class Watch {
   public:
    Watch(int descriptor, bool closes, CFFileDescriptorCallBack callback);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    CFFileDescriptorRef descriptor_;
  };

  // The dispositions of signals as they were before.
  class Handlers {
   public:
    Handlers();
    ~Handlers();
    Handlers(const Handlers&) = delete;
    Handlers& operator=(const Handlers&) = delete;

   private:
    struct sigaction before_[3];
    sigset_t maskBefore_;
  };

  Watch wakeUps_;
  Handlers handlers_;
  std::optional<Watch> readers_;  // where standard output is a pipe
};

}  // namespace shotlight
