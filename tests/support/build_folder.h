// Where the running test program was built, and what was built with it.
#pragma once

#include <filesystem>
#include <string>

// The path of a file of the build, named as from the build's folder: "bin/macho-link".
inline std::string builtFile(const std::string& name) {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / name;
}
