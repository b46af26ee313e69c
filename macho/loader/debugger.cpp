#include "macho/loader/debugger.h"

// A debugger stops here and reads the arguments from the stack. The empty statements keep the compiler from
// leaving out the calls, or from making one function of the two.
extern "C" {
[[gnu::noipa]] void machoImageLoaded(const char*, uint32_t) {
  asm volatile("");
}
[[gnu::noipa]] void machoImageUnloaded(const char*, uint32_t) {
  asm volatile("");
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
