// Whole files in and out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace macho {

// Both throw LinkError.
std::vector<uint8_t> readWholeFile(const std::string& path);
// Replaces the file at once, so that nobody meets half of it.
void writeWholeFile(const std::string& path, const std::vector<uint8_t>& contents);

}  // namespace macho
