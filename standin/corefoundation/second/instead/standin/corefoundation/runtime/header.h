// What every object begins with: found before the stand-in's own. The fields of the library's objects lie 16
// bytes further on than there. Those of classes that others register lie behind CFRuntimeBase, as they must.
#pragma once

#include <cstdint>

namespace cf {

struct ClassEntry;

struct Header {
  ClassEntry* isa;
  uint32_t count;
  uint32_t further[4] = {};
};

}  // namespace cf
