// The map of an __eh_frame section: where in it the things lie that a change of address or of register
// numbers touches. Both the linker, which moves sections, and the loader, which moves the table, work from
// it.
#pragma once

#include <vector>

#include "macho/format/bytes.h"

namespace macho {

struct FrameMap {
  struct Range {
    uint32_t offset, size;
  };

  std::vector<uint32_t> records;  // where each record begins, ascending
  std::vector<uint32_t> commons;  // 4-byte fields that hold the distance back to a common record
  // Offsets of 4-byte fields that hold the distance from the field itself to what they name.
  std::vector<uint32_t> functions;      // where a described function begins
  std::vector<uint32_t> languageData;   // a function's exception table; none is listed for a function without
  std::vector<uint32_t> personalities;  // the pointer to a personality routine
  std::vector<Range> instructions;      // the register rules
  uint32_t end = 0;                     // where the terminator lies, or would lie
};

// Throws FormatError for anything that is not understood whole.
FrameMap mapFrames(Bytes section);

}  // namespace macho
