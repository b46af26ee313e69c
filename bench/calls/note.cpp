#include "bench/calls/note.h"

#include <algorithm>
#include <cstdio>

#include "bench/calls/things.h"

namespace bench::calls {
namespace {

std::string nameOf(const void* thing) {
  if (!thing) return "null";
#define BENCH_NAME(name, ...) \
  if (thing == &name) return #name;
  BENCH_THINGS(BENCH_NAME)
#undef BENCH_NAME
  return std::to_string(reinterpret_cast<uintptr_t>(thing));
}

}  // namespace

Shown::Shown(const void* thing) : text(nameOf(thing)) {}

Shown buffer(const void* start, size_t size) {
  const auto* const bytes = static_cast<const char*>(start);
  const bool cleared = std::all_of(bytes, bytes + size, [](char byte) { return byte == 0; });
  return Shown(std::to_string(size) + (cleared ? " cleared bytes" : " bytes as they are"));
}

Shown place(const void* start) {
  return Shown(std::string(start ? "a place" : "null"));
}

void note(const char* function, std::initializer_list<Shown> arguments) {
  std::string line = function;
  const char* separator = "(";
  for (const Shown& argument : arguments) {
    line += separator + argument.text;
    separator = ", ";
  }
  line += arguments.size() ? ")\n" : "()\n";
  std::fputs(line.c_str(), stderr);
}

}  // namespace bench::calls
