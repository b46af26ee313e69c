#include "standin/system/clock.h"

#include <time.h>

#include <algorithm>

namespace standin {
namespace {

bool held = false;
double heldTime = 0;
double skippedAtStart = 0;  // how far the held clock was ahead of the system's when it was first held
double ahead = 0;           // how far this clock is ahead of the system's, since it was advanced while held

double systemTime() {
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

timespec timespecOf(double seconds) {
  constexpr double kLongestWait = 1e6;  // run loops wait again when less time has passed than they wanted
  seconds = std::clamp(seconds, 0.0, kLongestWait);
  timespec time;
  time.tv_sec = static_cast<time_t>(seconds);
  time.tv_nsec = static_cast<long>((seconds - static_cast<double>(time.tv_sec)) * 1e9);
  return time;
}

}  // namespace

double clockTime() {
  return held ? heldTime : systemTime() + ahead;
}

void holdClock() {
  if (!held) skippedAtStart = ahead;
  heldTime = clockTime();
  held = true;
}

double timeSkipped() {
  return held ? std::max(heldTime - systemTime() - skippedAtStart, 0.0) : 0;
}

void advanceClock(double seconds) {
  if (!held) die(__func__, "the clock isn't held; call holdClock first");
  heldTime += std::max(seconds, 0.0);
}

void releaseClock() {
  if (held) ahead = std::max(ahead, heldTime - systemTime());
  held = false;
}

void waitOnClock(std::vector<pollfd>& descriptors, double until) {
  const timespec time = timespecOf(held ? 0 : until - clockTime());
  const int ready = ::ppoll(descriptors.data(), descriptors.size(), &time, nullptr);
  if (ready < 0) {
    for (pollfd& descriptor : descriptors) descriptor.revents = 0;  // a signal: nothing is known about them
  } else if (ready == 0 && held) {
    heldTime = std::max(heldTime, until);
  }
}

}  // namespace standin
