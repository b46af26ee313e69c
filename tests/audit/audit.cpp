#include "tests/audit/audit.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

#include "tests/audit/objdump.h"

namespace audit {
namespace {

constexpr uint64_t kPage = 4096;  // bytes

bool isMetadataConstant(const std::string& symbol) {
  return symbol.starts_with("_kMDItem") || symbol.starts_with("_kMDQuery") ||
         symbol.starts_with("_kMDAttribute");
}

class Audit {
 public:
  Audit(const std::string& dylib, const Lists& lists)
      : dylib_(dylib), image_(imageOf(dylib)), wanted_(wantedOf(lists)), introduced_(introducedIn(lists)) {}

  std::vector<std::string> run() {
    checkKind();
    checkInitialisers();
    checkExports();
    checkLibraries();
    checkImports();
    checkText();
    checkAlignment();
    checkSize();
    return findings_;
  }

 private:
  void expect(bool holds, const std::string& finding) {
    if (!holds) findings_.push_back(finding);
  }

  void checkKind() {
    expect(image_.kind == "I386 DYLIB", "it is not an i386 dylib but " + image_.kind);
    expect(image_.minimumSystem == "10.6", "its minimum system is not 10.6 but " + image_.minimumSystem);
  }

  void checkInitialisers() {
    for (const Segment& segment : image_.segments) {
      for (const Section& section : segment.sections) {
        expect(!section.hasInitialisers(), "it has the section " + section.name);
      }
    }
    for (const std::string& command : image_.commands) {
      expect(!command.starts_with("LC_ROUTINES"), "it has an initialiser (" + command + ")");
    }
  }

  void checkExports() {
    std::set<std::string> exports = image_.exports;
    expect(exports.contains("_REALPluginMain"), "it does not export _REALPluginMain");
    exports.erase("_REALPluginMain");
    for (const std::string& other : exports) expect(false, "it exports " + other);
  }

  void checkLibraries() {
    std::vector<std::string> libraries;
    bool weakCoreServices = false;
    for (const Library& library : image_.libraries) {
      libraries.push_back(library.name + " " + library.current + " " + library.compatibility + " " +
                          library.command);
      weakCoreServices = weakCoreServices || (baseName(library.name) == "CoreServices" &&
                                              library.command == "LC_LOAD_WEAK_DYLIB");
    }
    expect(weakCoreServices, "CoreServices is not loaded weakly");
    for (size_t i = 0; i < std::max(libraries.size(), wanted_.libraries.size()); ++i) {
      const std::string is = i < libraries.size() ? libraries[i] : "nothing";
      const std::string listed = i < wanted_.libraries.size() ? wanted_.libraries[i] : "nothing";
      expect(is == listed, "library " + std::to_string(i + 1) + " is " + is + ", listed is " + listed);
    }
  }

  void checkImports() {
    std::set<std::string> imports;
    for (const Import& import : image_.imports) {
      imports.insert(import.library + " " + import.symbol);
      expect(import.weak || !isMetadataConstant(import.symbol), import.symbol + " is not a weak import");
      checkVersion(import);
    }
    for (const std::string& import : imports) {
      expect(wanted_.imports.contains(import), "it imports " + import + ", which is not listed");
    }
    for (const std::string& import : wanted_.imports) {
      expect(imports.contains(import), "it does not import " + import + ", which is listed");
    }
  }

  // dyld loads nothing that lacks a strong import.
  void checkVersion(const Import& import) {
    const auto row = introduced_.find(import.symbol);
    if (row == introduced_.end()) return;
    expect(import.weak || !isLater(row->second, image_.minimumSystem),
           import.symbol + " is first in macOS " + row->second + ", and not a weak import");
  }

  void checkText() {
    std::map<std::string, std::vector<std::string>> addresses;
    for (const Fixup& fixup : image_.fixups) {
      if (fixup.segment == "__TEXT") addresses[fixup.table].push_back(fixup.address);
    }
    for (const auto& [table, changed] : addresses) {
      const std::string others =
          changed.size() > 1 ? ", and " + std::to_string(changed.size() - 1) + " more" : "";
      expect(false, "at load time its text changes at " + changed.front() + others + " (" + table + ")");
    }
    for (const auto& [kind, count] : image_.relocations) {
      expect(count == 0, "it has relocations of the old kind: " + kind);
    }
  }

  void checkAlignment() {
    for (const Segment& segment : image_.segments) {
      expect(segment.address % kPage == 0 && segment.fileOffset % kPage == 0,
             "the segment " + segment.name + " does not begin with a page");
      for (const Section& section : segment.sections) checkAlignment(segment, section);
    }
  }

  void checkAlignment(const Segment& segment, const Section& section) {
    const bool isAligned =
        section.alignment < 32 && section.address % (uint64_t{1} << section.alignment) == 0;
    expect(isAligned, "the section " + section.name + " is not where its alignment wants it");
    const bool isMapped = section.offset - segment.fileOffset == section.address - segment.address;
    expect(!section.isInFile() || isMapped, "the section " + section.name + " is elsewhere in the file");
  }

  void checkSize() {
    const size_t size = std::filesystem::file_size(dylib_);
    expect(size <= kLargestSize,
           "it takes " + std::to_string(size) + " bytes, which is more than " + std::to_string(kLargestSize));
  }

  std::string dylib_;
  Image image_;
  Wanted wanted_;
  Versions introduced_;
  std::vector<std::string> findings_;
};

}  // namespace

std::vector<std::string> findings(const std::string& dylib, const Lists& lists) {
  return Audit(dylib, lists).run();
}

std::string sizeTable(const std::string& dylib) {
  std::ostringstream rows;
  const auto addRow = [&](const std::string& name, uint64_t size) {
    if (size > 0) rows << std::left << std::setw(22) << name << std::right << std::setw(7) << size << "\n";
  };
  const Image image = imageOf(dylib);
  uint64_t whole = 0;
  for (const Segment& segment : image.segments) {
    whole += segment.fileSize;
    addRow(segment.name, segment.fileSize);
    for (const Section& section : segment.sections) {
      if (section.isInFile()) addRow("  " + section.name, section.size);
    }
  }
  for (const Table& table : image.tables) addRow("  " + table.name, table.size);  // of the last segment
  addRow("of " + std::to_string(kLargestSize) + " at the most", whole);
  return rows.str();
}

}  // namespace audit
