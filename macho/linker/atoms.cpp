#include "macho/linker/atoms.h"

#include <algorithm>

#include "macho/format/bytes.h"
#include "macho/format/eh_frame.h"
#include "macho/format/format.h"

namespace macho {
namespace {

class Splitter {
 public:
  explicit Splitter(Object& object) : object_(object), whole_(std::move(object.sections)) {}

  void run() {
    object_.sections.clear();
    for (uint32_t i = 0; i < whole_.size(); ++i) {
      firstAtoms_.push_back(static_cast<uint32_t>(object_.sections.size()));
      starts_.push_back(startsOf(i));
      addAtoms(i);
    }
    for (uint32_t i = 0; i < whole_.size(); ++i) moveContents(i);
    for (InputSymbol& symbol : object_.symbols) {
      if (!symbol.defined) continue;
      const Place place = atomAt(symbol.section, static_cast<int32_t>(symbol.offset));
      symbol.section = place.index;
      symbol.offset = static_cast<uint32_t>(place.offset);
    }
  }

 private:
  // The offsets at which atoms begin, ascending, the first being 0.
  std::vector<uint32_t> startsOf(uint32_t index) const {
    const InputSection& section = whole_[index];
    if (section.dropped) return {0};
    switch (section.type) {
      case kCStrings:
        return stringStarts(section);
      case k4ByteLiterals:
      case kNonLazyPointers:
        return equalStarts(section, 4);
      case k8ByteLiterals:
        return equalStarts(section, 8);
      case k16ByteLiterals:
        return equalStarts(section, 16);
    }
    if (section.name == "__eh_frame") {
      return withZero(mapFrames(Bytes(section.bytes.data(), section.bytes.size())).records);
    }
    return object_.dividedBySymbols ? symbolStarts(index) : std::vector<uint32_t>{0};
  }

  static std::vector<uint32_t> withZero(std::vector<uint32_t> starts) {
    starts.push_back(0);
    std::sort(starts.begin(), starts.end());
    starts.erase(std::unique(starts.begin(), starts.end()), starts.end());
    return starts;
  }

  static std::vector<uint32_t> stringStarts(const InputSection& section) {
    if (!section.bytes.empty() && section.bytes.back() != 0) {
      throw FormatError("malformed: the last string of " + section.label() + " has no end");
    }
    std::vector<uint32_t> starts;
    for (uint32_t i = 0; i + 1 < section.size; ++i) {
      if (section.bytes[i] == 0) starts.push_back(i + 1);
    }
    return withZero(starts);
  }

  static std::vector<uint32_t> equalStarts(const InputSection& section, uint32_t size) {
    if (section.size % size) {
      throw FormatError("malformed: " + section.label() + " ends within its last entry");
    }
    std::vector<uint32_t> starts;
    for (uint32_t i = 0; i < section.size; i += size) starts.push_back(i);
    return withZero(starts);
  }

  std::vector<uint32_t> symbolStarts(uint32_t index) const {
    std::vector<uint32_t> starts;
    for (const InputSymbol& symbol : object_.symbols) {
      // What begins at the end would be an atom without a byte; it is the end of the last one.
      const bool begins = symbol.defined && symbol.section == index && symbol.offset < whole_[index].size;
      if (begins && !symbol.alternateEntry) starts.push_back(symbol.offset);
    }
    return withZero(starts);
  }

  void addAtoms(uint32_t index) {
    const InputSection& section = whole_[index];
    const std::vector<uint32_t>& starts = starts_[index];
    for (size_t i = 0; i < starts.size(); ++i) {
      const uint32_t start = starts[i];
      const uint32_t end = i + 1 < starts.size() ? starts[i + 1] : section.size;
      InputSection atom;
      atom.segment = section.segment;
      atom.name = section.name;
      atom.type = section.type;
      atom.dropped = section.dropped;
      atom.address = section.address + start;
      atom.size = end - start;
      // What the section's alignment makes of this place: no atom is less aligned than it was.
      atom.alignment = start ? std::min(section.alignment, start & -start) : section.alignment;
      if (!section.bytes.empty()) {
        atom.bytes.assign(section.bytes.begin() + start, section.bytes.begin() + end);
      }
      object_.sections.push_back(std::move(atom));
    }
  }

  void moveContents(uint32_t index) {
    InputSection& section = whole_[index];
    for (size_t i = 0; i < section.pointers.size(); ++i) {
      object_.sections[firstAtoms_[index] + i].pointers.push_back(moved(section.pointers[i]));
    }
    for (Fixup fixup : section.fixups) {
      const Place place = atomAt(index, static_cast<int32_t>(fixup.offset));
      InputSection& atom = object_.sections[place.index];
      fixup.offset = static_cast<uint32_t>(place.offset);
      if (atom.size < 4 || fixup.offset > atom.size - 4) {
        throw FormatError("malformed: " + section.label() + " has an address that two symbols share");
      }
      fixup.target = moved(fixup.target);
      if (fixup.kind == Fixup::kDifference) fixup.minus = moved(fixup.minus);
      atom.fixups.push_back(fixup);
    }
  }

  Place moved(const Place& place) const {
    return place.kind == Place::kSection ? atomAt(place.index, place.offset) : place;
  }

  Place atomAt(uint32_t index, int32_t offset) const {
    const InputSection& section = whole_[index];
    if (offset < 0 || static_cast<uint32_t>(offset) > section.size) {
      throw FormatError("malformed: an address outside of " + section.label() + " is meant to be in it");
    }
    const std::vector<uint32_t>& starts = starts_[index];
    const auto behind = std::upper_bound(starts.begin(), starts.end(), static_cast<uint32_t>(offset));
    const auto atom = static_cast<uint32_t>(behind - starts.begin()) - 1;
    return {Place::kSection, firstAtoms_[index] + atom, offset - static_cast<int32_t>(starts[atom])};
  }

  Object& object_;
  std::vector<InputSection> whole_;
  std::vector<uint32_t> firstAtoms_;           // of each section: its first atom among the object's sections
  std::vector<std::vector<uint32_t>> starts_;  // of each section
};

}  // namespace

void splitIntoAtoms(Object& object) {
  Splitter(object).run();
}

}  // namespace macho
