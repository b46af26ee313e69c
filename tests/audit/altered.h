// The files that the tests of the audit are about, and how copies of the dylib are altered.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tests/audit/lists.h"

// From the test program's own command line.
struct AuditFiles {
  std::string dylib;
  std::string otherDylib;  // version 1.0.0, as a Mac's linker made it
  audit::Lists lists;
  std::string program;  // dylib-audit
  std::string keys;     // docs/keys.md
};
extern AuditFiles files;

inline std::string contents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

inline uint32_t wordAt(const std::string& bytes, size_t offset) {
  uint32_t word;
  std::memcpy(&word, &bytes.at(offset), sizeof word);
  return word;
}

inline void setWord(std::string& bytes, size_t offset, uint32_t word) {
  std::memcpy(&bytes.at(offset), &word, sizeof word);
}

// The offset of the first load command of this kind in which this text stands.
inline size_t command(const std::string& bytes, uint32_t kind, const std::string& text = "") {
  size_t offset = 28;
  for (uint32_t left = wordAt(bytes, 16); left; --left) {
    const uint32_t size = wordAt(bytes, offset + 4);
    if (wordAt(bytes, offset) == kind && bytes.substr(offset, size).find(text) != std::string::npos)
      return offset;
    offset += size;
  }
  throw std::runtime_error("no such load command");
}

constexpr uint32_t kSegment = 0x1, kLoadDylib = 0xC, kLoadWeakDylib = 0x80000018, kDyldInfo = 0x80000022,
                   kMinimumSystem = 0x24, kDynamicSymbols = 0xB;

inline std::string replaced(std::string text, const std::string& old, const std::string& fresh) {
  const size_t position = text.find(old);
  EXPECT_NE(std::string::npos, position) << old;
  return position == std::string::npos ? text : text.replace(position, old.size(), fresh);
}
