#include "macho/format/file_contents.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace macho {

std::vector<uint8_t> fileContents(const std::string& path) {
  const auto fail = [] { throw std::system_error(errno, std::generic_category()); };
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) fail();
  std::vector<uint8_t> contents;
  uint8_t buffer[16384];
  while (const size_t count = std::fread(buffer, 1, sizeof buffer, file.get())) {
    contents.insert(contents.end(), buffer, buffer + count);
  }
  if (std::ferror(file.get())) fail();
  return contents;
}

}  // namespace macho
