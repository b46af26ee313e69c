// The list of what the dylib takes from other libraries: a text file, kept beside the sources.
//
//   # a comment, to the end of the line
//   library INSTALL-NAME CURRENT-VERSION COMPATIBILITY-VERSION [weak]
//   _symbol
//   ...
//
// The symbols below a library line come from that library. A weak library may be absent at run time. Versions
// have one to three numbers: 1, 7.9, 1.2.3.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace macho {

struct Library {
  std::string installName;
  uint32_t currentVersion = 0, compatibilityVersion = 0;
  bool weak = false;
};

struct ImportList {
  std::string path;
  std::vector<Library> libraries;
  std::map<std::string, size_t> symbols;  // to the index of their library
};

// Throws LinkError with the line's number.
ImportList readImportList(const std::string& path);

// A version as 16.8.8 bits; nothing when the text is not one.
std::optional<uint32_t> parseVersion(const std::string& text);

}  // namespace macho
