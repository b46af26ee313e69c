// The contents of __LINKEDIT: what dyld reads at load time, and the symbol table for other tools.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "macho/linker/relocate.h"

namespace macho {

// Each is padded to whole 8 bytes: tools that edit the file expect them to follow each other without gaps.
std::vector<uint8_t> rebaseBlob(const LoadTimeWork& work, uint32_t dataAddress);
std::vector<uint8_t> bindBlob(const LoadTimeWork& work, const std::vector<Import>& imports,
                              uint32_t dataAddress);

struct Export {
  std::string name;
  uint32_t address;
  uint8_t section;  // number in the dylib, from 1
};
// The exports are sorted by name and without duplicates.
std::vector<uint8_t> encodeExports(const std::vector<Export>& exports);

struct SymbolTable {
  std::vector<uint8_t> symbols;  // records: the exports, then the imports
  std::vector<uint8_t> strings;
  std::vector<uint8_t> indirect;  // the pointers, then the stubs
};
SymbolTable encodeSymbols(const std::vector<Export>& exports, const std::vector<Import>& imports,
                          const Layout& layout);

template <typename Record>
void append(std::vector<uint8_t>& bytes, const Record& record) {
  const auto* data = reinterpret_cast<const uint8_t*>(&record);
  bytes.insert(bytes.end(), data, data + sizeof record);
}

}  // namespace macho
