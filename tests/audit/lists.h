// What is kept with the sources of the libraries and symbols that the dylib takes from the system.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace audit {

// The files that an audit compares with.
struct Lists {
  std::string imports;     // cmake/imports.txt
  std::string introduced;  // introduced.txt, beside this file
};

struct Wanted {
  std::vector<std::string> libraries;  // "NAME CURRENT COMPATIBILITY COMMAND"
  std::set<std::string> imports;       // "LIBRARY SYMBOL"
};

typedef std::map<std::string, std::string> Versions;  // of macOS, by the symbols that it first has

// Each throws std::runtime_error when the file can't be read.
Wanted wantedOf(const Lists& lists);
Versions introducedIn(const Lists& lists);

// Whether macOS `version` is later than `other`; "10.10" is later than "10.9".
bool isLater(const std::string& version, const std::string& other);

}  // namespace audit
