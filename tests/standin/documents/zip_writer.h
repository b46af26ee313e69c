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
};

ZipEntry stored(std::string name, std::string data);

// Unpacks to `start`, blanks and `end`: 1,032 of them for each byte that `blanks` has here.
ZipEntry bomb(std::string name, std::string_view start, size_t blanks, std::string_view end);

std::string zipOf(const std::vector<ZipEntry>& entries);
