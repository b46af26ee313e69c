// Test code is compiled without the sanitizers, and linked with what they watch in one of the two builds.
#pragma once

extern "C" void __asan_init() __attribute__((weak));

inline bool underAddressSanitizer() {
  return __asan_init != nullptr;
}
