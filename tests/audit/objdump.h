// A Mach-O file as llvm-objdump tells of it.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace audit {

struct Section {
  std::string name;
  uint64_t address = 0, size = 0, offset = 0;  // in bytes; the offset is that in the file
  unsigned alignment = 0;                      // the address is a multiple of 2 to this power
  std::string type;                            // "S_REGULAR"

  bool isInFile() const { return type != "S_ZEROFILL"; }
  bool hasInitialisers() const;  // functions that dyld calls when it loads or unloads the file
};

struct Segment {
  std::string name;
  uint64_t address = 0, size = 0, fileOffset = 0, fileSize = 0;
  std::string protection;  // "r-x"
  std::vector<Section> sections;
};

// What a table of __LINKEDIT takes, in bytes.
struct Table {
  std::string name;
  uint64_t size;
};

struct Library {
  std::string command;  // LC_LOAD_DYLIB or LC_LOAD_WEAK_DYLIB, among others
  std::string name;     // by which it is installed
  std::string current, compatibility;
};

// A symbol that is taken from a library, however it is bound.
struct Import {
  std::string library;  // as llvm-objdump shortens its name: "libstdc++"
  std::string symbol;   // "_CFRelease"
  bool weak;            // may be absent
  auto operator<=>(const Import&) const = default;
};

// An address that is written when the file is loaded.
struct Fixup {
  std::string table;    // in which it is listed: "Rebase table"
  std::string segment;  // where it is
  std::string address;  // "0x00012345"
};

struct Image {
  std::string kind;                   // "I386 DYLIB"
  std::vector<std::string> commands;  // of the loader, in their order: "LC_SEGMENT"
  std::string installName, version, minimumSystem, uuid;
  std::vector<Segment> segments;
  std::vector<Table> tables;
  std::vector<Library> libraries;
  std::map<std::string, uint64_t> relocations;  // of the old kind: how many, by nextrel and nlocrel
  std::set<std::string> exports;                // "_REALPluginMain"
  std::set<Import> imports;
  std::vector<Fixup> fixups;
};

// Throws std::runtime_error, with the file's name, for what can't be read or isn't a Mach-O file of one
// processor.
Image imageOf(const std::string& file);

// As llvm-objdump writes a library in its tables: "libstdc++.6.dylib" as "libstdc++".
std::string shortName(const std::string& installName);
std::string baseName(const std::string& path);

}  // namespace audit
