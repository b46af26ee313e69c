// The gate of a Core Foundation that has none: found before the stand-ins' own. Calls aren't logged, counted
// or made to fail, nothing is counted as alive, and misuse ends the process without a word.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <string>

#define STANDIN_API

namespace standin {

class Gate {
 public:
  explicit Gate(const char*) {}
  bool fails() const { return false; }
  void detail(const char*) {}
};

class Callout {
 public:
  Callout() {}
};

[[noreturn]] inline void die(const char*, const std::string&) {
  std::abort();
}

inline const char* currentCall() {
  return "(no call)";
}

inline long& ledgerLine(const char*) {
  static long unread;
  return unread;
}

}  // namespace standin
