#include "macho/linker/layout.h"

#include <algorithm>
#include <cstring>
#include <tuple>

#include "macho/format/format.h"
#include "macho/linker/error.h"
#include "macho/linker/section_rules.h"

namespace macho {

bool OutputSection::zeroFill() const {
  return (flags & 0xFF) == kZeroFill;
}

uint32_t Layout::addPointer(const Symbols::Target& target) {
  const auto [entry, isNew] = pointerIndex_.emplace(target, static_cast<uint32_t>(pointers.size()));
  if (isNew) pointers.push_back(target);
  return entry->second;
}

void Layout::collectPointers() {
  for (uint32_t i = 0; i < objects_.size(); ++i) {
    for (const InputSection& section : objects_[i].sections) {
      if (section.dropped) continue;
      for (const Place& place : section.pointers) addPointer(symbols_.resolve(i, place));
    }
  }
}

void Layout::collectStubs() {
  for (uint32_t i = 0; i < objects_.size(); ++i) {
    for (const InputSection& section : objects_[i].sections) {
      if (section.dropped) continue;
      for (const Fixup& fixup : section.fixups) {
        if (fixup.kind != Fixup::kBranch) continue;
        const Symbols::Target target = symbols_.resolve(i, fixup.target);
        if (target.kind != Symbols::Target::kImport) continue;
        if (stubIndex_.emplace(target.import, static_cast<uint32_t>(stubs.size())).second) {
          stubs.push_back(target.import);
          addPointer({Symbols::Target::kImport, {}, target.import, 0});
        }
      }
    }
  }
}

// In the order in which dyld binds them, so that its address goes from one to the next.
void Layout::sortPointers() {
  const auto order = [&](const Symbols::Target& target) {
    const bool imported = target.kind == Symbols::Target::kImport;
    return std::make_tuple(!imported, imported ? symbols_.imports()[target.import].library : 0, target);
  };
  std::sort(pointers.begin(), pointers.end(),
            [&](const auto& a, const auto& b) { return order(a) < order(b); });
  for (uint32_t i = 0; i < pointers.size(); ++i) pointerIndex_[pointers[i]] = i;
}

OutputSection Layout::gather(const std::string& segment, const std::string& name, uint32_t flags) {
  OutputSection output;
  output.segment = segment;
  output.name = name;
  output.flags = flags;
  for (uint32_t i = 0; i < objects_.size(); ++i) {
    for (uint32_t j = 0; j < objects_[i].sections.size(); ++j) {
      const InputSection& input = objects_[i].sections[j];
      if (input.dropped || input.segment != segment || input.size == 0) continue;
      const auto goesHere = [&](const SectionRule& rule) {
        return rule.segment == segment && rule.becomes == name && input.name == rule.name;
      };
      if (std::none_of(sectionRules().begin(), sectionRules().end(), goesHere)) continue;
      const uint32_t offset = roundUp(output.size, input.alignment);
      output.pieces.push_back({i, j, offset});
      output.size = offset + input.size;
      output.alignment = std::max(output.alignment, input.alignment);
    }
  }
  // The end of the frame table is a zero word.
  if (name == "__eh_frame" && output.size) output.size += 4;
  return output;
}

void Layout::makeSections() {
  OutputSection pointerSection;
  pointerSection.segment = "__DATA";
  pointerSection.name = "__nl_symbol_ptr";
  pointerSection.flags = kNonLazyPointers;
  pointerSection.alignment = 4;
  pointerSection.size = static_cast<uint32_t>(pointers.size()) * 4;
  if (pointerSection.size) data.sections.push_back(pointerSection);

  for (const SectionRule& rule : sectionRules()) {
    OutputSegment& segment = std::strcmp(rule.segment, "__TEXT") == 0 ? text : data;
    if (find(rule.segment, rule.becomes)) continue;
    OutputSection section = gather(rule.segment, rule.becomes, rule.flags);
    if (section.size) segment.sections.push_back(section);
    if (section.name != "__text" || stubs.empty()) continue;
    OutputSection stubSection;
    stubSection.segment = "__TEXT";
    stubSection.name = "__stubs";
    stubSection.flags = kStubs | kPureInstructions | kSomeInstructions;
    stubSection.alignment = 4;
    stubSection.size = static_cast<uint32_t>(stubs.size()) * kStubSize;
    stubSection.reserved1 =
        static_cast<uint32_t>(pointers.size());  // behind the pointers in the indirect table
    stubSection.reserved2 = kStubSize;
    text.sections.push_back(stubSection);
  }
}

void Layout::assignAddresses(uint32_t headerSize) {
  uint32_t address = headerSize;
  for (OutputSegment* segment : {&text, &data}) {
    if (segment == &data) address = segment->address = text.memorySize;
    uint32_t fileEnd = address;
    for (OutputSection& section : segment->sections) {
      section.address = roundUp(address, section.alignment);
      address = section.address + section.size;
      if (!section.zeroFill()) {
        fileEnd = address;
        section.bytes.resize(section.size);
      }
      for (const OutputSection::Piece& piece : section.pieces) {
        addresses_[{piece.object, piece.section}] = section.address + piece.offset;
      }
    }
    segment->memorySize = roundUp(address, kPageSize) - segment->address;
    segment->fileSize = roundUp(fileEnd, kPageSize) - segment->address;
  }
}

const OutputSection* Layout::find(const std::string& segment, const std::string& name) const {
  const auto& sections = segment == "__TEXT" ? text.sections : data.sections;
  const auto isIt = [&](const OutputSection& section) { return section.name == name; };
  const auto found = std::find_if(sections.begin(), sections.end(), isIt);
  return found == sections.end() ? nullptr : &*found;
}

uint32_t Layout::pointerAddress(const Symbols::Target& target) const {
  return data.sections.front().address + pointerIndex_.at(target) * 4;
}

uint32_t Layout::stubAddress(uint32_t import) const {
  return find("__TEXT", "__stubs")->address + stubIndex_.at(import) * kStubSize;
}

uint32_t Layout::addressOf(const Location& location) const {
  const Object& object = objects_[location.object];
  const InputSection& section = object.sections[location.section];
  if (section.joined) return addressOf({section.joined->object, section.joined->section, location.offset});
  if (section.type == kNonLazyPointers) {
    const auto index = static_cast<uint32_t>(location.offset) / 4;
    if (index < section.pointers.size()) {
      return pointerAddress(symbols_.resolve(location.object, section.pointers[index]));
    }
  }
  const auto found = addresses_.find({location.object, location.section});
  if (found == addresses_.end()) {
    throw LinkError(object.path,
                    "refers to " + section.label() + ", which is not a part of the dylib; compile it again");
  }
  return found->second + location.offset;
}

}  // namespace macho
