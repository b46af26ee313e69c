#include "macho/linker/fixup_reader.h"

#include <algorithm>
#include <optional>

#include "macho/format/eh_frame.h"

namespace macho {
namespace {

// Behind the last byte of a section is still of it, unless another begins there.
uint32_t sectionAt(const Object& object, uint32_t address) {
  std::optional<uint32_t> ending;
  for (uint32_t i = 0; i < object.sections.size(); ++i) {
    const InputSection& section = object.sections[i];
    if (address - section.address < section.size) return i;
    if (address - section.address == section.size) ending = i;
  }
  if (!ending) throw FormatError("malformed: a relocation names an address outside of every section");
  return *ending;
}

Place spotAt(const Object& object, uint32_t address) {
  const uint32_t section = sectionAt(object, address);
  return {Place::kSection, section, static_cast<int32_t>(address - object.sections[section].address)};
}

class FixupReader {
 public:
  FixupReader(Object& object, Bytes file) : object_(object), file_(file) {}

  void readSection(uint32_t index, const SectionRecord& record) {
    section_ = &object_.sections[index];
    if (section_->dropped || section_->type == kNonLazyPointers || section_->type == kZeroFill) return;
    if (record.relocationCount > file_.size() / sizeof(RelocationRecord)) {
      throw FormatError("malformed: " + section_->label() +
                        " has more relocations than the file has room for");
    }
    for (uint32_t i = 0; i < record.relocationCount; ++i) {
      const auto relocation = relocationAt(record, i);
      if (isDifference(relocation)) {
        if (++i == record.relocationCount) throw FormatError("malformed: half a pair of relocations");
        addDifference(relocation, relocationAt(record, i));
      } else {
        addPlain(relocation);
      }
    }
    if (section_->name == "__eh_frame") addFrames(index);
  }

 private:
  RelocationRecord relocationAt(const SectionRecord& record, uint32_t index) const {
    return file_.read<RelocationRecord>(record.relocationOffset + index * sizeof(RelocationRecord));
  }

  static bool isDifference(const RelocationRecord& relocation) {
    return relocation.scattered() &&
           (relocation.type() == kSectionDifference || relocation.type() == kLocalSectionDifference);
  }

  uint32_t contentAt(uint32_t offset) const {
    return Bytes(section_->bytes.data(), section_->bytes.size()).read<uint32_t>(offset);
  }

  void requireWord(const RelocationRecord& relocation) const {
    constexpr uint32_t kFourBytes = 2;
    if (relocation.length() == kFourBytes) return;
    throw FormatError("malformed: " + section_->label() + " has a relocation of another size than 4 bytes");
  }

  void addDifference(const RelocationRecord& first, const RelocationRecord& second) {
    requireWord(first);
    if (second.type() != kPair) throw FormatError("malformed: half a pair of relocations");
    const uint32_t offset = first.address();
    const uint32_t distance = first.value() - second.value();
    section_->fixups.push_back({Fixup::kDifference, offset, placeAt(object_, first.value()),
                                spotAt(object_, second.value()),
                                static_cast<int32_t>(contentAt(offset) - distance)});
  }

  void addPlain(const RelocationRecord& relocation) {
    if (!relocation.scattered() && relocation.type() == kThreadLocal) {
      throw FormatError("uses thread-local variables; use plain ones");
    }
    if (relocation.type() != kVanilla) {
      throw FormatError(section_->label() + " has a relocation of unknown type " +
                        std::to_string(relocation.type()));
    }
    requireWord(relocation);
    const uint32_t offset = relocation.address();
    uint32_t content = contentAt(offset);
    // A distance is stored as from the object's own addresses.
    if (relocation.pcRelative()) content += section_->address + offset + 4;
    Fixup fixup = {relocation.pcRelative() ? Fixup::kBranch : Fixup::kAbsolute, offset, {}, {}, 0};
    if (relocation.scattered()) {
      fixup.target = placeAt(object_, relocation.value());
      fixup.addend = static_cast<int32_t>(content - relocation.value());
    } else if (relocation.external()) {
      if (relocation.number() >= object_.symbols.size())
        throw FormatError("malformed: a relocation has no symbol");
      fixup.target = {Place::kSymbol, relocation.number(), 0};
      fixup.addend = static_cast<int32_t>(content);
    } else {
      if (relocation.number() == 0 || relocation.number() > object_.sections.size()) {
        throw FormatError("malformed: a relocation has no section");
      }
      const uint32_t section = relocation.number() - 1;
      fixup.target = {Place::kSection, section,
                      static_cast<int32_t>(content - object_.sections[section].address)};
    }
    section_->fixups.push_back(fixup);
  }

  // Functions and exception tables are named by distances that the assembler resolved without a relocation,
  // on the assumption that sections stay where they are.
  void addFrames(uint32_t index) {
    const FrameMap map = mapFrames(Bytes(section_->bytes.data(), section_->bytes.size()));
    requireFrameFields(map);
    for (const auto* fields : {&map.functions, &map.languageData}) {
      for (const uint32_t offset : *fields) addFrameField(index, offset);
    }
    for (const uint32_t offset : map.commons) addCommonField(index, offset);
    // Only the dylib's last table may have a terminator; the next object's follows directly.
    if (map.end % 4) throw FormatError("malformed: its __eh_frame is no whole number of words");
    section_->bytes.resize(map.end);
    section_->size = map.end;
  }

  // What follows relies on it: the rules are put in other words, and records are moved.
  void requireFrameFields(const FrameMap& map) const {
    for (const Fixup& fixup : section_->fixups) {
      const auto has = [&](const std::vector<uint32_t>& fields) {
        return std::find(fields.begin(), fields.end(), fixup.offset) != fields.end();
      };
      if (!has(map.functions) && !has(map.languageData) && !has(map.personalities)) {
        throw FormatError("malformed: its __eh_frame has an address in an unusual place");
      }
    }
  }

  void addFrameField(uint32_t index, uint32_t offset) {
    for (const Fixup& fixup : section_->fixups) {
      if (fixup.offset == offset) return;  // this assembler did make a relocation
    }
    // The exact copy that the record describes, also when another object's copy is the one that stays.
    const Place target = spotAt(object_, section_->address + offset + contentAt(offset));
    const Place self = {Place::kSection, index, static_cast<int32_t>(offset)};
    section_->fixups.push_back({Fixup::kDifference, offset, target, self, 0});
  }

  void addCommonField(uint32_t index, uint32_t offset) {
    const Place self = {Place::kSection, index, static_cast<int32_t>(offset)};
    const Place common = {Place::kSection, index, static_cast<int32_t>(offset - contentAt(offset))};
    section_->fixups.push_back({Fixup::kDifference, offset, self, common, 0});
  }

  Object& object_;
  Bytes file_;
  InputSection* section_ = nullptr;
};

}  // namespace

Place placeAt(const Object& object, uint32_t address) {
  const Place spot = spotAt(object, address);
  for (uint32_t i = 0; i < object.symbols.size(); ++i) {
    const InputSymbol& symbol = object.symbols[i];
    const bool begins =
        symbol.defined && symbol.section == spot.index && symbol.offset == static_cast<uint32_t>(spot.offset);
    if (begins && symbol.global && symbol.weakDefinition) return {Place::kSymbol, i, 0};
  }
  return spot;
}

void readFixups(Object& object, Bytes file, const std::vector<SectionRecord>& records) {
  FixupReader reader(object, file);
  for (uint32_t i = 0; i < records.size(); ++i) reader.readSection(i, records[i]);
}

}  // namespace macho
