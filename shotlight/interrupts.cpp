#include "shotlight/interrupts.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "shotlight/commands.h"
#include "shotlight/errors.h"
#include "shotlight/output.h"

namespace shotlight {
namespace {

#ifdef ADDRESS_SANITIZER
constexpr suseconds_t kGrace = 999'999;  // microseconds; everything takes longer there
#else
constexpr suseconds_t kGrace = 250'000;
#endif

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// What the handlers of signals share with the rest: nothing else may be touched there, and nothing be called
// that takes memory or a lock.
struct Heard {
  volatile sig_atomic_t signal = 0;  // that came first
  volatile sig_atomic_t status = 0;
  volatile sig_atomic_t told = 0;
  volatile sig_atomic_t onTerminal = 0;  // standard error, which may have a line of progress on it
  volatile sig_atomic_t wakeUps = -1;    // an eventfd
} heard;

void write(int descriptor, const void* bytes, size_t size) {
  while (::write(descriptor, bytes, size) < 0 && errno == EINTR) {
  }
}

void tellOnce() {
  constexpr char kMessage[] = "shotlight: interrupted\n";
  if (heard.told) return;
  heard.told = 1;
  write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
}

void endNow(int) {
  constexpr char kClearLine[] = "\r\x1B[K";
  if (heard.onTerminal) write(STDERR_FILENO, kClearLine, sizeof kClearLine - 1);
  tellOnce();
  _exit(heard.status);
}

void startGrace() {
  const itimerval grace{{}, {0, kGrace}};
  ::setitimer(ITIMER_REAL, &grace, nullptr);
}

void wakeRunLoop() {
  constexpr uint64_t kOnce = 1;
  if (heard.wakeUps >= 0) write(heard.wakeUps, &kOnce, sizeof kOnce);
}

void hear(int signal) {
  if (heard.signal != 0) endNow(signal);
  const int error = errno;
  heard.signal = signal;
  heard.status = kInterrupted + signal;
  startGrace();
  wakeRunLoop();
  errno = error;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int each : kSignals) sigaddset(&action.sa_mask, each);
  ::sigaction(signal, &action, nullptr);
}

int newEvent() {
  heard.wakeUps = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (heard.wakeUps >= 0) return heard.wakeUps;
  throw CommandError(std::string("signals can't be waited for: ") + std::strerror(errno) +
                     "; close some files and try again");
}

void stopRunLoop(CFFileDescriptorRef event, CFOptionFlags, void*) {
  uint64_t count;
  while (::read(heard.wakeUps, &count, sizeof count) < 0 && errno == EINTR) {
  }
  CFFileDescriptorEnableCallBacks(event, kCFFileDescriptorReadCallBack);
  CFRunLoopStop(CFRunLoopGetCurrent());
}

// Of a socket, also called when something is sent to us, which nobody reads.
void endWithoutReaders(CFFileDescriptorRef, CFOptionFlags, void*) {
  pollfd output{STDOUT_FILENO, 0, 0};
  if (::poll(&output, 1, 0) <= 0) return;
  ::raise(SIGPIPE);
  hear(SIGPIPE);  // where the program was started to ignore that
}

}  // namespace

Interrupts::Watch::Watch(int descriptor, bool closes, CFFileDescriptorCallBack callback)
    : descriptor_(CFFileDescriptorCreate(kCFAllocatorDefault, descriptor, closes, callback, nullptr)) {
  const CFRunLoopSourceRef source = CFFileDescriptorCreateRunLoopSource(kCFAllocatorDefault, descriptor_, 0);
  CFRunLoopAddSource(CFRunLoopGetCurrent(), source, kCFRunLoopDefaultMode);
  CFRelease(source);
  CFFileDescriptorEnableCallBacks(descriptor_, kCFFileDescriptorReadCallBack);
}

Interrupts::Watch::~Watch() {
  CFFileDescriptorInvalidate(descriptor_);
  CFRelease(descriptor_);
}

Interrupts::Handlers::Handlers() {
  sigset_t heardOnes;
  sigemptyset(&heardOnes);
  sigaddset(&heardOnes, SIGALRM);
  handle(SIGALRM, endNow);
  for (size_t i = 0; i < std::size(kSignals); ++i) {
    sigaddset(&heardOnes, kSignals[i]);
    ::sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) handle(kSignals[i], hear);
  }
  ::sigprocmask(SIG_UNBLOCK, &heardOnes, &maskBefore_);
}

// A program that is to end yet must hear SIGALRM after this, too.
Interrupts::Handlers::~Handlers() {
  for (size_t i = 0; i < std::size(kSignals); ++i) ::sigaction(kSignals[i], &before_[i], nullptr);
  sigdelset(&maskBefore_, SIGALRM);
  ::sigprocmask(SIG_SETMASK, &maskBefore_, nullptr);
  heard.wakeUps = -1;
}

Interrupts::Interrupts() : wakeUps_(newEvent(), true, stopRunLoop) {
  heard.onTerminal = isatty(STDERR_FILENO);
  if (outputIsPipe()) readers_.emplace(STDOUT_FILENO, false, endWithoutReaders);
}

int Interrupts::signal() const {
  return heard.signal;
}

void Interrupts::tell() {
  tellOnce();
}

void Interrupts::setStatus(int status) {
  heard.told = 1;
  heard.status = status;
  if (heard.signal != 0) startGrace();
}

}  // namespace shotlight
