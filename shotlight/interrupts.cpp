#include "shotlight/interrupts.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include "shotlight/errors.h"

namespace shotlight {
namespace {

constexpr int64_t kRecent = 10;  // milliseconds

// By the clock that takes the least time to read.
int64_t milliseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

sigset_t handledSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

}  // namespace

Interrupts::Interrupts() {
  const sigset_t handled = handledSignals();
  sigprocmask(SIG_BLOCK, &handled, &before_);
  fd_ = signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd_ < 0) {
    const std::string reason = std::strerror(errno);
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    throw CommandError("signals can't be waited for: " + reason + "; close some files and try again");
  }
  CFFileDescriptorContext context{};
  context.info = this;
  descriptor_ = CFFileDescriptorCreate(nullptr, fd_, true, wake, &context);
  source_ = CFFileDescriptorCreateRunLoopSource(nullptr, descriptor_, 0);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source_, kCFRunLoopDefaultMode);
  CFFileDescriptorEnableCallBacks(descriptor_, kCFFileDescriptorReadCallBack);
}

Interrupts::~Interrupts() {
  signal();  // one that came late has been heard: it must not end the program below
  CFFileDescriptorInvalidate(descriptor_);
  CFRelease(source_);
  CFRelease(descriptor_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int Interrupts::signal() {
  signalfd_siginfo info;
  while (read(fd_, &info, sizeof info) == sizeof info) {
    if (signal_ == 0) signal_ = static_cast<int>(info.ssi_signo);
  }
  return signal_;
}

int Interrupts::recentSignal() {
  const int64_t now = milliseconds();
  if (now - asked_ < kRecent) return signal_;
  asked_ = now;
  return signal();
}

void Interrupts::wake(CFFileDescriptorRef descriptor, CFOptionFlags, void* self) {
  static_cast<Interrupts*>(self)->signal();
  CFRunLoopStop(CFRunLoopGetCurrent());
  CFFileDescriptorEnableCallBacks(descriptor, kCFFileDescriptorReadCallBack);
}

}  // namespace shotlight
