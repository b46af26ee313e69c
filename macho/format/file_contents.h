#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace macho {

// All of a file. Throws std::system_error when it can't be read; the caller says what to do then.
std::vector<uint8_t> fileContents(const std::string& path);

}  // namespace macho
