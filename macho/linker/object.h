// An object file, brought into one plain form: sections with their bytes, symbols, and the places that are to
// be filled in once addresses are known.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace macho {

// Something inside one object that has an address: a symbol, or a spot in a section.
struct Place {
  enum Kind { kSymbol, kSection } kind;
  uint32_t index;  // of the symbol or section
  int32_t offset;  // from there
};

// Four bytes of a section that depend on addresses.
struct Fixup {
  enum Kind {
    kAbsolute,    // the target's address
    kBranch,      // the distance from behind the four bytes to the target
    kDifference,  // the target's address minus another's
  };
  Kind kind;
  uint32_t offset;
  Place target;
  Place minus;     // for a difference
  int32_t addend;  // to be added to the result
};

// Which section, or atom, of which object.
struct AtomIndex {
  uint32_t object, section;
  auto operator<=>(const AtomIndex&) const = default;
};

// A section of an object, or one atom of it (macho/linker/atoms.h).
struct InputSection {
  std::string segment, name;
  uint32_t address = 0, size = 0, alignment = 1;  // as the object has them
  uint32_t type = 0;
  bool dropped = false;             // nothing of it goes into the dylib
  std::optional<AtomIndex> joined;  // dropped, and this one, which is equal, stands in its place
  std::vector<uint8_t> bytes;       // empty for a zero-fill section
  std::vector<Fixup> fixups;
  std::vector<Place> pointers;  // for a section of pointers: what each of its words points to

  std::string label() const { return segment + "," + name; }
};

struct InputSymbol {
  std::string name;
  bool global = false, defined = false, hidden = false;
  bool weakDefinition = false, weakReference = false;
  bool alternateEntry = false;       // lies within what another symbol began
  uint32_t section = 0, offset = 0;  // when defined
};

struct Object {
  std::string path;
  bool dividedBySymbols = false;  // each symbol begins a part that may be moved or left out
  std::vector<InputSection> sections;
  std::vector<InputSymbol> symbols;

  // The symbol that a spot of a section belongs to, for messages; "the start of the section" when none does.
  std::string nameOf(uint32_t section, uint32_t offset) const;
};

// Its sections are divided into atoms. Throws LinkError.
Object readObject(const std::string& path);
// The same for a file that was read already. `path` is what messages call it. A fuzzer calls this.
Object readObjectContents(const std::string& path, std::span<const uint8_t> contents);

}  // namespace macho
