#include "macho/loader/debugger.h"

// A debugger stops here and reads the arguments from the stack. The statements, empty but for a comment each,
// keep the compiler from leaving out an argument or a call, and from making one function of the two.
extern "C" {
[[gnu::noinline]] void machoImageLoaded(const char* path, uint32_t slide) {
  asm volatile("# loaded" : : "g"(path), "g"(slide));
}
[[gnu::noinline]] void machoImageUnloaded(const char* path, uint32_t slide) {
  asm volatile("# unloaded" : : "g"(path), "g"(slide));
}
}

namespace macho {

DebuggerNotice::DebuggerNotice(const std::string& path, uint32_t slide) : path_(path), slide_(slide) {
  machoImageLoaded(path_.c_str(), slide_);
}

DebuggerNotice::~DebuggerNotice() {
  machoImageUnloaded(path_.c_str(), slide_);
}

}  // namespace macho
