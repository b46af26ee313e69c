// The variable-length numbers and the texts of __LINKEDIT.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace macho {

inline void appendULEB(std::vector<uint8_t>& bytes, uint32_t value) {
  do {
    const uint8_t low = value & 0x7F;
    value >>= 7;
    bytes.push_back(value ? low | 0x80 : low);
  } while (value);
}

inline void appendSLEB(std::vector<uint8_t>& bytes, int32_t value) {
  for (;;) {
    const uint8_t low = value & 0x7F;
    value >>= 7;  // keeps the sign
    const bool done = (value == 0 && !(low & 0x40)) || (value == -1 && (low & 0x40));
    bytes.push_back(done ? low : low | 0x80);
    if (done) return;
  }
}

// With its terminating zero.
inline void appendText(std::vector<uint8_t>& bytes, const std::string& text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0);
}

}  // namespace macho
