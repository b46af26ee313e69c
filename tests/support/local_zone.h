// The process's time zone for the time of a test.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

class LocalZone {
 public:
  // In the POSIX form, which needs no table of zones: "EST5EDT,M3.2.0,M11.1.0".
  explicit LocalZone(const char* zone) {
    if (const char* const before = std::getenv("TZ")) before_ = before;
    set(zone);
  }
  ~LocalZone() { set(before_ ? before_->c_str() : nullptr); }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;

 private:
  static void set(const char* zone) {
    if (zone) ::setenv("TZ", zone, 1);
    if (!zone) ::unsetenv("TZ");
    ::tzset();
  }

  std::optional<std::string> before_;
};
