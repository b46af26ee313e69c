// The log of calls that the stubs print when they are compiled with NOTED. Otherwise NOTE is nothing, and a
// stub is what it does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace bench::calls {

#ifdef NOTED
constexpr bool kNoted = true;
#else
constexpr bool kNoted = false;
#endif

// One argument, as the log shows it.
class Shown {
 public:
  Shown(long number) : text(std::to_string(number)) {}
  Shown(int number) : text(std::to_string(number)) {}
  Shown(unsigned number) : text(std::to_string(number)) {}
  Shown(unsigned long number) : text(std::to_string(number)) {}
  Shown(int64_t number) : text(std::to_string(number)) {}
  Shown(double number) : text(std::to_string(number)) {}
  Shown(const char* shown) : text(shown ? shown : "null") {}
  Shown(const void* thing);  // its name in things.h; of anything else the address
  explicit Shown(std::string shown) : text(std::move(shown)) {}

  std::string text;
};

// A buffer to be filled, with its size, and whether it was cleared.
Shown buffer(const void* start, size_t size);
// A place for an answer: whether there is one.
Shown place(const void* start);

void note(const char* function, std::initializer_list<Shown> arguments);

}  // namespace bench::calls

#define NOTE(...) \
  if constexpr (bench::calls::kNoted) bench::calls::note(__func__, {__VA_ARGS__})
