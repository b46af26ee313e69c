// The trie in which a dylib lists what it exports.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "macho/format/bytes.h"

namespace macho {

// Either an address of the image or a symbol of another library.
struct FoundExport {
  uint32_t address = 0;    // as counted in the file, from the header's address
  std::string reexported;  // what it is called there; empty for an address
};

// Nothing when the symbol is not exported, or as something else. Throws FormatError when the trie is
// malformed on the way.
std::optional<FoundExport> findExport(Bytes trie, const std::string& name);

}  // namespace macho
