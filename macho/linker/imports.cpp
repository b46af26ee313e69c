#include "macho/linker/imports.h"

#include <sstream>

#include "macho/format/files.h"
#include "macho/linker/error.h"

namespace macho {
namespace {

class Reader {
 public:
  explicit Reader(const std::string& path) { list_.path = path; }

  ImportList read() {
    const std::vector<uint8_t> contents = readWholeFile(list_.path);
    std::istringstream lines(std::string(contents.begin(), contents.end()));
    for (std::string line; std::getline(lines, line);) {
      ++lineNumber_;
      readLine(line.substr(0, line.find('#')));
    }
    return list_;
  }

 private:
  void readLine(const std::string& line) {
    std::istringstream words(line);
    std::string first;
    if (!(words >> first)) return;
    if (first == "library") return readLibrary(words);
    std::string extra;
    if (words >> extra) fail("has words after the symbol " + first + "; write one symbol to a line");
    if (list_.libraries.empty())
      fail("has the symbol " + first + " before any library; write its library first");
    if (!list_.symbols.emplace(first, list_.libraries.size() - 1).second) {
      fail("has the symbol " + first + " a second time; remove one of them");
    }
  }

  void readLibrary(std::istringstream& words) {
    Library library;
    std::string current, compatibility, weak, extra;
    words >> library.installName >> current >> compatibility >> weak >> extra;
    const auto currentVersion = parseVersion(current), compatibilityVersion = parseVersion(compatibility);
    if (!currentVersion || !compatibilityVersion || (!weak.empty() && weak != "weak") || !extra.empty()) {
      fail("is not of the form: library INSTALL-NAME CURRENT COMPATIBILITY [weak]; correct it");
    }
    library.currentVersion = *currentVersion;
    library.compatibilityVersion = *compatibilityVersion;
    library.weak = !weak.empty();
    for (const Library& other : list_.libraries) {
      if (other.installName == library.installName) fail("names a library a second time; merge the two");
    }
    list_.libraries.push_back(library);
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw LinkError(list_.path + ":" + std::to_string(lineNumber_), what);
  }

  ImportList list_;
  int lineNumber_ = 0;
};

}  // namespace

ImportList readImportList(const std::string& path) {
  return Reader(path).read();
}

std::optional<uint32_t> parseVersion(const std::string& text) {
  constexpr uint32_t kLimits[] = {0xFFFF, 0xFF, 0xFF};
  constexpr unsigned kShifts[] = {16, 8, 0};
  uint32_t version = 0;
  size_t position = 0;
  for (unsigned part = 0; part < 3; ++part) {
    const size_t end = std::min(text.find('.', position), text.size());
    const std::string digits = text.substr(position, end - position);
    if (digits.empty() || digits.size() > 5) return std::nullopt;
    if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const auto number = static_cast<uint32_t>(std::stoul(digits));
    if (number > kLimits[part]) return std::nullopt;
    version |= number << kShifts[part];
    if (end == text.size()) return version;
    position = end + 1;
  }
  return std::nullopt;
}

}  // namespace macho
