// Whole files in and out, for the command-line tools.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace macho {

// What is wrong with a file, for people: "FILE: what; what to do".
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
  FileError(const std::string& file, const std::string& what) : std::runtime_error(file + ": " + what) {}
};

// Both throw FileError.
std::vector<uint8_t> readWholeFile(const std::string& path);
// Replaces the file at once, so that nobody meets half of it.
void writeWholeFile(const std::string& path, const std::vector<uint8_t>& contents);

}  // namespace macho
