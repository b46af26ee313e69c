// Keeps an object alive for the time of a scope.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

namespace standin::metadata {

class Held {
 public:
  explicit Held(CFTypeRef cf) : cf_(CFRetain(cf)) {}
  ~Held() { CFRelease(cf_); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

 private:
  const CFTypeRef cf_;
};

}  // namespace standin::metadata
