// The debug information of a dylib in an ELF file, for a debugger that doesn't read Mach-O.
#pragma once

#include <cstdint>
#include <vector>

#include "macho/format/bytes.h"

namespace macho {

// From a flat dSYM file. The sections of the dylib's segments have their addresses in it and no contents: the
// debugger reads those from the process. Throws FormatError.
std::vector<uint8_t> makeDebugELF(Bytes dsym);

}  // namespace macho
