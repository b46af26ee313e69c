// What the program is at, for people who wait.
#pragma once

#include <chrono>
#include <string>

namespace shotlight {

// Shows a line on standard error, if that is a terminal, once a second has passed, and takes it away when the
// object ends.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // "12345 results so far". Cheap to call often.
  void show(size_t count, const char* what);
  void clear();

 private:
  using Clock = std::chrono::steady_clock;
  const bool terminal_;
  Clock::time_point next_;
  bool shown_ = false;
};

}  // namespace shotlight
