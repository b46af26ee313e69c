#include "macho/loader/darwin_functions.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

namespace macho {
namespace {

// Fills memory with a pattern, whose last copy may be cut short. Compilers make loops into calls of it.
template <size_t kSize>
void memsetPattern(void* memory, const void* pattern, size_t size) {
  auto* next = static_cast<uint8_t*>(memory);
  for (; size >= kSize; size -= kSize, next += kSize) std::memcpy(next, pattern, kSize);
  std::memcpy(next, pattern, size);
}

// Where an image's stubs go until they are bound. Images are bound whole before anything of them runs, and
// one with a stub that was left out is refused, so this is imported but never called.
[[noreturn]] void stubBinder() {
  std::fputs("a function of a Mach-O image was called that its load did not bind\n", stderr);
  std::abort();
}

}  // namespace

void* darwinFunction(const std::string& name) {
  static const std::map<std::string, void*> table = {
      {"dyld_stub_binder", reinterpret_cast<void*>(&stubBinder)},
      {"memset_pattern4", reinterpret_cast<void*>(&memsetPattern<4>)},
      {"memset_pattern8", reinterpret_cast<void*>(&memsetPattern<8>)},
      {"memset_pattern16", reinterpret_cast<void*>(&memsetPattern<16>)},
  };
  const auto entry = table.find(name);
  return entry == table.end() ? nullptr : entry->second;
}

}  // namespace macho
