#include "tests/audit/audit.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace audit {
namespace {

typedef std::vector<std::string> Words;

// The lines of llvm-objdump's answer, each split at its spaces.
std::vector<Words> dump(const std::string& option, const std::string& file) {
  const std::string command = LLVM_OBJDUMP " --macho " + option + " '" + file + "' 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error(command + ": can't be started");
  std::string output;
  char buffer[4096];
  while (const size_t count = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, count);
  const int status = pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(command + ": " + output);
  std::vector<Words> lines;
  std::istringstream stream(output);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    lines.emplace_back();
    for (std::string word; words >> word;) lines.back().push_back(word);
  }
  return lines;
}

struct Library {
  std::string command;  // LC_LOAD_DYLIB or LC_LOAD_WEAK_DYLIB
  std::string name, current, compatibility;
};

// One "Load command" of --private-headers: its fields by first word, sections apart.
struct Headers {
  struct Part {
    std::string name;
    size_t size;   // in the file
    bool segment;  // or within one
  };
  std::vector<Part> parts;
  std::string file;  // "I386 DYLIB"
  std::vector<Library> libraries;
  std::set<std::string> sections;
  std::string minimumSystem;
  std::map<std::string, std::string> relocations;  // nextrel and nlocrel
};

// The line's part of the file, if it tells of one.
void readPart(std::vector<Headers::Part>& parts, const std::string& command, const Words& line) {
  const std::string &key = line[0], &value = line[1];
  // What a table of __LINKEDIT counts, in bytes.
  static const std::map<std::string, std::pair<const char*, size_t>> tables = {
      {"rebase_size", {"rebases", 1}},
      {"bind_size", {"binds", 1}},
      {"weak_bind_size", {"weak binds", 1}},
      {"lazy_bind_size", {"lazy binds", 1}},
      {"export_size", {"exports", 1}},
      {"nsyms", {"symbols", 12}},
      {"nindirectsyms", {"indirect symbols", 4}},
      {"strsize", {"strings", 1}}};
  if (key == "cmd" && value == "LC_SEGMENT") parts.push_back({"", 0, true});
  if (command == "LC_SEGMENT" && key == "sectname") parts.push_back({value, 0, false});
  if (parts.empty()) return;
  Headers::Part& part = parts.back();
  if (key == "segname" && part.segment) part.name = value;
  if (key == "filesize") part.size = std::stoul(value);
  if (key == "size" && !part.segment) part.size = std::stoul(value, nullptr, 16);
  if (key == "type" && value == "S_ZEROFILL") part.size = 0;
  if (const auto table = tables.find(key); table != tables.end() && value != "0") {
    parts.push_back({table->second.first, table->second.second * std::stoul(value), false});
  }
}

Headers readHeaders(const std::string& dylib) {
  Headers headers;
  std::string command;
  for (const Words& line : dump("--private-headers", dylib)) {
    if (line.size() < 2) continue;
    const std::string &key = line[0], &value = line[1];
    if (key == "MH_MAGIC" && line.size() > 4) headers.file = line[1] + " " + line[4];
    if (key == "cmd") {
      command = value;
      if (command.ends_with("_DYLIB") && command != "LC_ID_DYLIB")
        headers.libraries.push_back({command, "", "", ""});
    }
    if (key == "sectname") headers.sections.insert(value);
    readPart(headers.parts, command, line);
    if (key == "nextrel" || key == "nlocrel") headers.relocations[key] = value;
    if (command == "LC_VERSION_MIN_MACOSX" && key == "version") headers.minimumSystem = value;
    if (command == "LC_ID_DYLIB" || !command.ends_with("_DYLIB")) continue;
    if (key == "name") headers.libraries.back().name = value;
    if (key == "current" && line.size() > 2) headers.libraries.back().current = line[2];
    if (key == "compatibility" && line.size() > 2) headers.libraries.back().compatibility = line[2];
  }
  return headers;
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

// As llvm-objdump writes a library in its tables: "libstdc++.6.dylib" as "libstdc++".
std::string shortName(const std::string& installName) {
  const std::string base = baseName(installName);
  return base.substr(0, base.find('.'));
}

std::string fullVersion(std::string version) {
  while (std::count(version.begin(), version.end(), '.') < 2) version += ".0";
  return version;
}

// The list kept with the sources: "NAME CURRENT COMPATIBILITY COMMAND" of each library, "LIBRARY SYMBOL" of
// each import.
struct Wanted {
  std::vector<std::string> libraries;
  std::set<std::string> imports;
};

Wanted readWanted(const std::string& path) {
  std::ifstream stream(path);
  if (!stream) throw std::runtime_error(path + ": can't be read");
  Wanted wanted;
  std::string library;
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string first, current, compatibility, weak;
    if (!(words >> first)) continue;
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

bool isMetadataConstant(const std::string& symbol) {
  return symbol.starts_with("_kMDItem") || symbol.starts_with("_kMDQuery") ||
         symbol.starts_with("_kMDAttribute");
}

class Audit {
 public:
  Audit(const std::string& dylib, const std::string& importList)
      : dylib_(dylib), headers_(readHeaders(dylib)), wanted_(readWanted(importList)) {}

  std::vector<std::string> run() {
    checkKind();
    checkExports();
    checkLibraries();
    checkImports();
    checkText();
    checkSize();
    return findings_;
  }

 private:
  void expect(bool holds, const std::string& finding) {
    if (!holds) findings_.push_back(finding);
  }

  void checkKind() {
    expect(headers_.file == "I386 DYLIB", "it is not an i386 dylib but " + headers_.file);
    expect(headers_.minimumSystem == "10.6", "its minimum system is not 10.6 but " + headers_.minimumSystem);
    for (const char* section : {"__mod_init_func", "__mod_term_func", "__StaticInit"}) {
      expect(!headers_.sections.contains(section), std::string("it has the section ") + section);
    }
  }

  void checkExports() {
    std::set<std::string> exports;
    for (const Words& line : dump("--exports-trie", dylib_)) {
      if (line.size() > 1 && line[0].starts_with("0x")) exports.insert(line[1]);
    }
    expect(exports.contains("_REALPluginMain"), "it does not export _REALPluginMain");
    exports.erase("_REALPluginMain");
    for (const std::string& other : exports) expect(false, "it exports " + other);
  }

  void checkLibraries() {
    std::vector<std::string> libraries;
    bool weakCoreServices = false;
    for (const Library& library : headers_.libraries) {
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

  // A row of the table: segment, section, address, "pointer", addend, library, symbol, "(weak_import)" or
  // nothing.
  void checkImports() {
    std::set<std::string> imports;
    for (const Words& row : dump("--bind", dylib_)) {
      if (row.size() < 7 || !row[0].starts_with("__")) continue;
      imports.insert(row[5] + " " + row[6]);
      const bool weak = row.size() > 7 && row[7] == "(weak_import)";
      expect(weak || !isMetadataConstant(row[6]), row[6] + " is not a weak import");
    }
    for (const std::string& import : imports) {
      expect(wanted_.imports.contains(import), "it imports " + import + ", which is not listed");
    }
    for (const std::string& import : wanted_.imports) {
      expect(imports.contains(import), "it does not import " + import + ", which is listed");
    }
  }

  void checkText() {
    for (const char* table : {"--rebase", "--bind", "--weak-bind", "--lazy-bind"}) {
      for (const Words& row : dump(table, dylib_)) {
        if (row.size() < 3) continue;
        expect(row[0] != "__TEXT", "at load time its text changes at " + row[2] + " (" + table + ")");
      }
    }
    for (const char* kind : {"nextrel", "nlocrel"}) {
      expect(headers_.relocations[kind] == "0", std::string("it has relocations of the old kind: ") + kind);
    }
  }

  void checkSize() {
    const size_t size = std::filesystem::file_size(dylib_);
    expect(size <= kLargestSize,
           "it takes " + std::to_string(size) + " bytes, which is more than " + std::to_string(kLargestSize));
  }

  std::string dylib_;
  Headers headers_;
  Wanted wanted_;
  std::vector<std::string> findings_;
};

}  // namespace

std::vector<std::string> findings(const std::string& dylib, const std::string& importList) {
  return Audit(dylib, importList).run();
}

std::string sizeTable(const std::string& dylib) {
  std::ostringstream table;
  const auto addRow = [&](const std::string& name, size_t size) {
    table << std::left << std::setw(22) << name << std::right << std::setw(7) << size << "\n";
  };
  size_t whole = 0;
  for (const Headers::Part& part : readHeaders(dylib).parts) {
    if (part.segment) whole += part.size;
    if (part.size == 0) continue;
    addRow((part.segment ? "" : "  ") + part.name, part.size);
  }
  addRow("of " + std::to_string(kLargestSize) + " at the most", whole);
  return table.str();
}

}  // namespace audit
