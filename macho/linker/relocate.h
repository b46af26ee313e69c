// Fills the laid-out sections with bytes, addresses put in, and notes what is left to do at load time.
#pragma once

#include <vector>

#include "macho/linker/layout.h"
#include "macho/linker/object.h"
#include "macho/linker/symbols.h"

namespace macho {

struct LoadTimeWork {
  struct Bind {
    uint32_t address;
    uint32_t import;
    int32_t addend;
  };
  std::vector<uint32_t> rebases;  // addresses of words that hold an address of the dylib; ascending
  std::vector<Bind> binds;        // by address, ascending
};

// Throws LinkError, above all where code would need changing at load time.
LoadTimeWork relocate(const std::vector<Object>& objects, const Symbols& symbols, Layout& layout);

}  // namespace macho
