// The gate through which every call into a stand-in passes.
//
// A stand-in function opens a Gate with its own name as its first act. The gate logs the call, counts it, and
// tells the function when a test has chosen this very call to fail. Only calls that come from outside the
// stand-ins count: while one stand-in function runs, the calls it makes to others (the metadata library to
// Core Foundation, the host to both) are its own business and stay out of the log. A stand-in that calls out
// (a notification callback, an event handler, a method of the plug-in) opens a Callout for the time of that
// call, so that what the callee does counts again.
//
// The log, the counters and the plan of failures belong to the process; like the plug-in, the stand-ins are
// used from one thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#define STANDIN_API __attribute__((visibility("default")))

namespace standin {

// What a call that was chosen to throw throws, before it does anything else. An exception of the host's
// passes through the plug-in like this.
struct STANDIN_API PlannedException {};

// What every call looks at. Nearly all calls are those of one stand-in to another, or nobody watches: so the
// gate opens and closes in place, and only a watched call goes to the log, the counts and the plan.
struct GateState {
  int depth;              // of open gates
  const char* outermost;  // the name of the first of them; null when none is open
  bool watched;           // calls are logged or counted, or a failure is planned
};
extern STANDIN_API GateState gateState;

class STANDIN_API Gate {
 public:
  // `name` must live as long as the process: `__func__` of a C function, or a string literal. Throws a
  // PlannedException when this call was chosen to throw.
  explicit Gate(const char* name) : fails_(false) {
    if (gateState.depth == 0) {
      if (gateState.watched) fails_ = takeWatchedCall(name);
      gateState.outermost = name;
    }
    ++gateState.depth;
  }
  ~Gate() {
    if (--gateState.depth == 0) gateState.outermost = nullptr;
  }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  // True when this call was chosen to fail: the function answers as its original does when it can't do its
  // work (usually null), except that a release still releases.
  bool fails() const { return fails_; }

  // What the call is about, for a detailed log: behind its name there.
  void detail(const char* what);

 private:
  static bool takeWatchedCall(const char* name);

  bool fails_;
};

class STANDIN_API Callout {
 public:
  Callout() : before_(gateState) { gateState.depth = 0; }
  ~Callout();
  Callout(const Callout&) = delete;
  Callout& operator=(const Callout&) = delete;

 private:
  const GateState before_;
};

// The opposite: a stand-in that runs without having been called (when a run loop or a timer calls it back)
// opens an Inside for that time, so that the calls it makes to others stay out of the log.
class STANDIN_API Inside {
 public:
  // `name` stands for the call in messages: a string literal.
  explicit Inside(const char* name);
  ~Inside();
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;

 private:
  const GateState before_;
};

// The log: names of the calls in order. Off at first; while it is off nothing is stored.
STANDIN_API void startLog();
STANDIN_API void startDetailedLog();                // tells releases by type: "CFRelease CFString"
STANDIN_API std::vector<std::string> stopLog();     // hands over what was logged and turns the log off
STANDIN_API void logNote(const std::string& note);  // adds a line of the caller's own, when the log is on

// Failures. A plan stays until it is replaced or cleared. Calls are counted from 1, from the moment of
// planning.
STANDIN_API void failCall(const char* name, int nth);       // the nth call of that name
STANDIN_API void failCall(int nth);                         // the nth call of all
STANDIN_API void throwFromCall(const char* name, int nth);  // the nth call of that name throws
STANDIN_API void clearFailures();
STANDIN_API int failuresFired();  // how many calls were made to fail since the last plan was set

// Counts of calls by name, from 0 on since countCalls; before it, nothing is counted, and asking for a count
// ends the process.
STANDIN_API void countCalls();
STANDIN_API int callCount(const char* name);

// Ends the process with "standin: CALL: WHAT" on standard error: a misuse that the original would punish with
// a crash or, worse, with silence.
[[noreturn]] STANDIN_API void die(const char* call, const std::string& what);

// The call of the outermost open gate, for messages; "(no call)" when none is open.
STANDIN_API const char* currentCall();

// Each library of stand-ins keeps freed objects for a while, so that a late use of one is recognised. So many
// bytes of them at the most: 16 MB at first. A program that runs for its results, and not to find misuse,
// needs less: its memory then stays in the processor's caches.
STANDIN_API void setFreedBytesKept(size_t bytes);
STANDIN_API size_t freedBytesKept();

// The ledger: what is alive, by kind ("CFString", "host object", "host string lock", ...).
// The reference stays good for the life of the process, so a library looks its line up once and keeps it.
STANDIN_API long& ledgerLine(const char* kind);
struct LedgerLine {
  std::string kind;
  long count;
};
// Lines whose count is not 0, sorted by kind.
STANDIN_API std::vector<LedgerLine> ledger();

}  // namespace standin
