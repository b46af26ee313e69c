// Makes ZIP archives, good ones and such as nobody should make.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct ZipEntry {
  std::string name;
  std::string data;  // as it is stored
  uint32_t size;     // that it is said to have when unpacked
  uint16_t method;   // 0: as it is; 8: deflated
  uint16_t flags = 0;
  uint32_t crc = 0;
};

ZipEntry stored(std::string name, std::string data);

uint32_t crcOf(std::string_view bytes);

// Unpacks to `start`, blanksOf(zeros) blanks and `end`. The checksum is not told: nobody should get as far.
ZipEntry bomb(std::string name, std::string_view start, size_t zeros, std::string_view end);

constexpr size_t blanksOf(size_t zeros) {
  return 1 + 258 * 4 * (zeros + 1);
}

std::string zipOf(const std::vector<ZipEntry>& entries);
