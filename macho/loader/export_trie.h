// The trie in which a dylib lists what it exports.
#pragma once

#include <cstdint>
#include <optional>

#include "macho/format/bytes.h"

namespace macho {

// The exported symbol's address as counted in the file, from the header's address. Nothing when it is not
// exported, or not as an address of this image. Throws FormatError when the trie is malformed on the way.
std::optional<uint32_t> findExport(Bytes trie, const char* name);

}  // namespace macho
