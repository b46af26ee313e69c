#include "macho/linker/relocate.h"

#include <algorithm>
#include <cstring>

#include "macho/linker/error.h"

namespace macho {
namespace {

void setWord(uint8_t* word, uint32_t value) {
  std::memcpy(word, &value, sizeof value);
}

class Relocator {
 public:
  Relocator(const std::vector<Object>& objects, const Symbols& symbols, Layout& layout)
      : objects_(objects), symbols_(symbols), layout_(layout) {}

  LoadTimeWork run() {
    fillPointers();
    fillStubs();
    for (OutputSegment* segment : {&layout_.text, &layout_.data}) {
      for (OutputSection& section : segment->sections) {
        for (const OutputSection::Piece& piece : section.pieces) fillPiece(section, piece);
      }
    }
    std::sort(work_.rebases.begin(), work_.rebases.end());
    std::sort(work_.binds.begin(), work_.binds.end(),
              [](const auto& a, const auto& b) { return a.address < b.address; });
    return work_;
  }

 private:
  void fillPointers() {
    for (size_t i = 0; i < layout_.pointers.size(); ++i) {
      OutputSection& section = layout_.data.sections.front();
      const uint32_t offset = static_cast<uint32_t>(i) * 4;
      setAddress(section, offset, layout_.pointers[i], 0);
    }
  }

  void fillStubs() {
    for (OutputSection& section : layout_.text.sections) {
      if (section.name != "__stubs") continue;
      for (size_t i = 0; i < layout_.stubs.size(); ++i) {
        const Symbols::Target target = {Symbols::Target::kImport, {}, layout_.stubs[i], 0};
        const auto offset = static_cast<uint32_t>(i) * kStubSize;
        fillStub(&section.bytes[offset], layout_.pointerAddress(target) - (section.address + offset + 5));
      }
    }
  }

  // No absolute address, so that the code is the same wherever the dylib lies:
  //   call next; next: pop %eax; jmp *(distance from next to the pointer)(%eax)
  static void fillStub(uint8_t* stub, uint32_t distance) {
    constexpr uint8_t code[kStubSize] = {0xE8, 0, 0, 0, 0, 0x58, 0xFF, 0xA0};
    std::memcpy(stub, code, sizeof code);
    setWord(stub + 8, distance);
  }

  void fillPiece(OutputSection& section, const OutputSection::Piece& piece) {
    const InputSection& input = objects_[piece.object].sections[piece.section];
    if (input.bytes.empty()) return;
    std::copy(input.bytes.begin(), input.bytes.end(), section.bytes.begin() + piece.offset);
    for (const Fixup& fixup : input.fixups) apply(section, piece, fixup);
  }

  void apply(OutputSection& section, const OutputSection::Piece& piece, const Fixup& fixup) {
    const Symbols::Target target = symbols_.resolve(piece.object, fixup.target);
    const uint32_t offset = piece.offset + fixup.offset;
    const uint32_t address = section.address + offset;
    const bool imported = target.kind == Symbols::Target::kImport;
    switch (fixup.kind) {
      case Fixup::kAbsolute:
        if (section.segment == "__TEXT") {
          fail(piece, fixup,
               "holds the absolute address of " + name(piece.object, fixup.target) +
                   "; compile it as position-independent code (without -mdynamic-no-pic, -fno-pic)");
        }
        if (imported && symbols_.imports()[target.import].weak && target.addend + fixup.addend != 0) {
          fail(piece, fixup,
               "adds to the address of " + name(piece.object, fixup.target) +
                   ", which may be absent; add at run time, after a test for null");
        }
        setAddress(section, offset, target, fixup.addend);
        return;
      case Fixup::kBranch: {
        const uint32_t destination =
            imported ? layout_.stubAddress(target.import) : layout_.addressOf(target.location);
        setWord(&section.bytes[offset], destination + fixup.addend - (address + 4));
        return;
      }
      case Fixup::kDifference: {
        if (imported) {
          fail(piece, fixup,
               "needs the distance to " + name(piece.object, fixup.target) +
                   ", which is imported; declare it so that the compiler goes through a pointer");
        }
        const Symbols::Target minus = symbols_.resolve(piece.object, fixup.minus);
        setWord(&section.bytes[offset],
                layout_.addressOf(target.location) - layout_.addressOf(minus.location) + fixup.addend);
        return;
      }
    }
  }

  void setAddress(OutputSection& section, uint32_t offset, const Symbols::Target& target, int32_t addend) {
    const uint32_t address = section.address + offset;
    if (target.kind == Symbols::Target::kImport) {
      setWord(&section.bytes[offset], 0);
      work_.binds.push_back({address, target.import, target.addend + addend});
    } else {
      setWord(&section.bytes[offset], layout_.addressOf(target.location) + addend);
      work_.rebases.push_back(address);
    }
  }

  std::string name(uint32_t object, const Place& place) const {
    if (place.kind == Place::kSymbol) return objects_[object].symbols[place.index].name;
    const auto& section = objects_[object].sections[place.index];
    return objects_[object].nameOf(place.index, static_cast<uint32_t>(place.offset)) + " in " +
           section.label();
  }

  [[noreturn]] void fail(const OutputSection::Piece& piece, const Fixup& fixup,
                         const std::string& what) const {
    const Object& object = objects_[piece.object];
    throw LinkError(object.path, object.nameOf(piece.section, fixup.offset) + " in " +
                                     object.sections[piece.section].label() + " " + what);
  }

  const std::vector<Object>& objects_;
  const Symbols& symbols_;
  Layout& layout_;
  LoadTimeWork work_;
};

}  // namespace

LoadTimeWork relocate(const std::vector<Object>& objects, const Symbols& symbols, Layout& layout) {
  return Relocator(objects, symbols, layout).run();
}

}  // namespace macho
