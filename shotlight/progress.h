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
  // "12345 files looked at, 210 a second; 2300 are still to be read", or what of that there is to tell.
  void showLooked(size_t looked, size_t toBeRead, bool isAll);
  void clear();
  void mute() { isMute_ = true; }  // shows nothing from now on

 private:
  using Clock = std::chrono::steady_clock;

  bool isDue() const { return terminal_ && !isMute_ && Clock::now() >= next_; }
  void print(const std::string& line);

  const bool terminal_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_;
  bool shown_ = false;
  bool isMute_ = false;
};

}  // namespace shotlight
