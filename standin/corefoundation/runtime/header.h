// What every object begins with.
#pragma once

#include <cstdint>

#include "standin/corefoundation/CFRuntime.h"

namespace cf {

struct ClassEntry;

// The fields of an object lie behind it.
struct Header {
  ClassEntry* isa;  // the object's place in the table of classes
  uint32_t count;
};
static_assert(sizeof(Header) == sizeof(CFRuntimeBase), "Header");

}  // namespace cf
