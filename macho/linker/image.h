// The dylib as a file: header, load commands, segments.
#pragma once

#include <cstdint>
#include <vector>

#include "macho/linker/imports.h"
#include "macho/linker/layout.h"
#include "macho/linker/linkedit.h"
#include "macho/linker/options.h"

namespace macho {

// How many bytes the header and the load commands take, with room for a longer install name.
uint32_t headerSize(const Options& options, const ImportList& list, size_t sectionCount);

// The same input gives the same bytes: the UUID is made of the contents.
std::vector<uint8_t> makeImage(const Options& options, const ImportList& list, const Symbols& symbols,
                               const Layout& layout, const LoadTimeWork& work,
                               const std::vector<Export>& exports);

}  // namespace macho
