// Objects, as the linker reads them and divides them into atoms.
//
// The input is an object.
#include <cstdint>
#include <string>

#include "fuzz/input.h"
#include "macho/linker/error.h"
#include "macho/linker/object.h"

namespace {

bool isPlaceOf(const macho::Object& object, const macho::Place& place) {
  const size_t count = place.kind == macho::Place::kSymbol ? object.symbols.size() : object.sections.size();
  return place.index < count;
}

// What the rest of the linker relies on.
void check(const macho::Object& object) {
  for (const macho::InputSection& section : object.sections) {
    fuzz::require(section.bytes.empty() || section.bytes.size() == section.size, "a section of another size");
    for (const macho::Place& place : section.pointers)
      fuzz::require(isPlaceOf(object, place), "a pointer to nothing");
    for (const macho::Fixup& fixup : section.fixups) {
      fuzz::require(section.bytes.size() >= 4 && fixup.offset <= section.bytes.size() - 4,
                    "a fixup outside of its section");
      fuzz::require(isPlaceOf(object, fixup.target), "a fixup to nothing");
      if (fixup.kind == macho::Fixup::kDifference)
        fuzz::require(isPlaceOf(object, fixup.minus), "a distance from nothing");
    }
  }
  for (const macho::InputSymbol& symbol : object.symbols) {
    if (!symbol.defined) continue;
    fuzz::require(symbol.section < object.sections.size(), "a symbol in no section");
    fuzz::require(symbol.offset <= object.sections[symbol.section].size, "a symbol outside of its section");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    check(macho::readObjectContents("fuzzed.o", {data, size}));
  } catch (const macho::LinkError&) {
  }
  return 0;
}
