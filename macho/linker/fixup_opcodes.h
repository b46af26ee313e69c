// What dyld does to __DATA at load time, as the opcodes of LC_DYLD_INFO. Their order is free: each word is
// written once, whatever comes before. So the opcodes are chosen for their size alone.
#pragma once

#include <cstdint>
#include <vector>

#include "macho/linker/relocate.h"

namespace macho {

// Without padding. `dataAddress` is where the segment that all of it lies in begins.
//
// `rebases` ascend. Runs, columns of equal distances and tables of equal records take a few bytes each.
std::vector<uint8_t> encodeRebases(const std::vector<uint32_t>& rebases, uint32_t dataAddress);

// By library, then by symbol, as in `imports`, so that each of these is named once.
std::vector<uint8_t> encodeBinds(std::vector<LoadTimeWork::Bind> binds, const std::vector<Import>& imports,
                                 uint32_t dataAddress);

}  // namespace macho
