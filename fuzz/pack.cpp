// fuzz-pack DYLIB PACKED: a small dylib as an input of the target macho_images.
#include <cstdint>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/pages.h"

int main(int count, char** words) {
  if (count != 3) return 2;
  std::ifstream file(words[1], std::ios::binary);
  const std::vector<uint8_t> contents{std::istreambuf_iterator<char>(file), {}};
  const std::vector<uint8_t> packed = fuzz::withoutPages(contents);
  std::ofstream result(words[2], std::ios::binary);
  result.write(reinterpret_cast<const char*>(packed.data()), static_cast<std::streamsize>(packed.size()));
  result.close();
  return file && result && !packed.empty() && fuzz::withPages(packed) == contents ? 0 : 1;
}
