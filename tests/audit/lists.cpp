#include "tests/audit/lists.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/audit/objdump.h"

namespace audit {
namespace {

// The lines that have words, without comments.
std::vector<std::istringstream> linesOf(const std::string& path) {
  std::ifstream stream(path);
  if (!stream) throw std::runtime_error(path + ": can't be read");
  std::vector<std::istringstream> lines;
  for (std::string line; std::getline(stream, line);) {
    line = line.substr(0, line.find('#'));
    if (line.find_first_not_of(" \t") != std::string::npos) lines.emplace_back(line);
  }
  return lines;
}

std::string fullVersion(std::string version) {
  while (std::count(version.begin(), version.end(), '.') < 2) version += ".0";
  return version;
}

// "10.6" as 10 and 6.
std::vector<int> numbersOf(const std::string& version) {
  std::vector<int> numbers;
  std::istringstream parts(version);
  for (int number; parts >> number; parts.ignore()) numbers.push_back(number);
  return numbers;
}

}  // namespace

Wanted wantedOf(const Lists& lists) {
  Wanted wanted;
  std::string library;
  for (std::istringstream& words : linesOf(lists.imports)) {
    std::string first, current, compatibility, weak;
    words >> first;
    if (first != "library") {
      wanted.imports.insert(library + " " + first);
      continue;
    }
    words >> library >> current >> compatibility >> weak;
    wanted.libraries.push_back(library + " " + fullVersion(current) + " " + fullVersion(compatibility) + " " +
                               (weak == "weak" ? "LC_LOAD_WEAK_DYLIB" : "LC_LOAD_DYLIB"));
    library = shortName(library);
  }
  return wanted;
}

Versions introducedIn(const Lists& lists) {
  Versions versions;
  for (std::istringstream& words : linesOf(lists.introduced)) {
    std::string symbol;
    words >> symbol;
    words >> versions[symbol];
  }
  return versions;
}

bool isLater(const std::string& version, const std::string& other) {
  return numbersOf(version) > numbersOf(other);
}

}  // namespace audit
