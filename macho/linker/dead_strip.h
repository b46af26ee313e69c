// Leaves out what nothing refers to: copies of inline functions that lost against another object's copy or
// were inlined wherever they were called, and what only these used.
#pragma once

#include <string>
#include <vector>

#include "macho/linker/object.h"
#include "macho/linker/symbols.h"

namespace macho {

// Marks as dropped each atom that can't be reached from the exported symbols. Every address that an atom
// needs is one of its fixups or pointers, so what no fixup leads to, nothing in the dylib can touch. A frame
// record belongs to the function that it describes.
void dropUnreached(std::vector<Object>& objects, const Symbols& symbols,
                   const std::vector<std::string>& exported);

}  // namespace macho
