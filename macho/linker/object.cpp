#include "macho/linker/object.h"

#include <algorithm>
#include <optional>

#include "macho/format/bytes.h"
#include "macho/format/files.h"
#include "macho/format/format.h"
#include "macho/linker/atoms.h"
#include "macho/linker/error.h"
#include "macho/linker/fixup_reader.h"
#include "macho/linker/section_rules.h"

namespace macho {
namespace {

const char kHowToCompile[] = "; compile it with -target i386-apple-macosx10.6 -c";

// Keeps every address of a dylib far from where 32 bits wrap.
constexpr uint32_t kLargestSection = 16 << 20;

class ObjectReader {
 public:
  ObjectReader(const std::string& path, Bytes file) : file_(file) { object_.path = path; }

  Object read() {
    checkHeader();
    const auto header = file_.read<Header>(0);
    object_.dividedBySymbols = header.flags & kSubsectionsViaSymbols;
    size_t offset = sizeof header;
    for (uint32_t i = 0; i < header.commandCount; ++i) {
      const auto command = file_.read<Command>(offset);
      if (command.size < sizeof command) throw FormatError("malformed: a load command has no size");
      const Bytes bytes = file_.slice(offset, command.size);
      if (command.kind == kSegment) readSegment(bytes);
      if (command.kind == kSymbolTable) symbolTable_ = bytes.read<SymbolTableCommand>(0);
      if (command.kind == kDynamicSymbolTable) {
        dynamicTable_ = bytes.read<DynamicSymbolTableCommand>(0);
      }
      offset += command.size;
    }
    readSymbols();
    for (uint32_t i = 0; i < object_.sections.size(); ++i) {
      if (object_.sections[i].type == kNonLazyPointers) readPointers(i);
    }
    readFixups(object_, file_, records_);
    splitIntoAtoms(object_);
    return std::move(object_);
  }

 private:
  void checkHeader() const {
    const auto startsWith = [this](std::initializer_list<uint8_t> bytes) {
      return file_.size() >= bytes.size() && std::equal(bytes.begin(), bytes.end(), file_.data());
    };
    if (startsWith({'B', 'C', 0xC0, 0xDE}) || startsWith({0xDE, 0xC0, 0x17, 0x0B})) {
      throw FormatError("holds compiler bitcode, not machine code; compile it without -flto");
    }
    if (file_.size() < 4 || file_.read<uint32_t>(0) != kMagic32) {
      throw FormatError(std::string("is not a 32-bit Mach-O object") + kHowToCompile);
    }
    const auto header = file_.read<Header>(0);
    if (header.cpuType != kCpuI386) {
      throw FormatError(std::string("is made for another processor than i386") + kHowToCompile);
    }
    if (header.fileType != kFileObject) {
      throw FormatError(std::string("is a linked Mach-O file, not an object") + kHowToCompile);
    }
  }

  void readSegment(Bytes command) {
    const auto segment = command.read<SegmentCommand>(0);
    for (uint32_t i = 0; i < segment.sectionCount; ++i) {
      const auto record = command.read<SectionRecord>(sizeof segment + i * sizeof(SectionRecord));
      records_.push_back(record);
      object_.sections.push_back(readSection(record));
    }
  }

  InputSection readSection(const SectionRecord& record) const {
    InputSection section;
    section.segment = fixedName(record.segment);
    section.name = fixedName(record.name);
    section.address = record.address;
    section.size = record.size;
    section.type = record.type();
    if (record.alignment > 12)
      throw FormatError(section.label() + " is aligned to more than a page; lower it");
    if (record.size > kLargestSection) {
      throw FormatError(section.label() + " takes " + std::to_string(record.size) +
                        " bytes; allocate large arrays at run time");
    }
    section.alignment = 1u << record.alignment;
    section.dropped = isDropped(section);
    requireKnown(section);
    if (section.type != kZeroFill && !section.dropped) {
      const Bytes bytes = file_.slice(record.offset, record.size);
      section.bytes.assign(bytes.data(), bytes.data() + bytes.size());
    }
    return section;
  }

  void readSymbols() {
    for (uint32_t i = 0; i < symbolTable_.symbolCount; ++i) {
      const auto record = file_.read<SymbolRecord>(symbolTable_.symbolOffset + i * sizeof(SymbolRecord));
      const Bytes strings = file_.slice(symbolTable_.stringOffset, symbolTable_.stringSize);
      object_.symbols.push_back(readSymbol(record, strings.text(record.nameOffset)));
    }
  }

  InputSymbol readSymbol(const SymbolRecord& record, const std::string& name) const {
    InputSymbol symbol;
    symbol.name = name;
    if (record.type & kDebugSymbol) return symbol;
    symbol.global = record.type & kExternal;
    symbol.hidden = record.type & kPrivateExternal;
    const uint8_t type = record.type & kTypeMask;
    if (type == kDefinedInSection) {
      if (record.section == 0 || record.section > object_.sections.size()) {
        throw FormatError("malformed: the symbol " + name + " is in a section that is not there");
      }
      const InputSection& section = object_.sections[record.section - 1];
      symbol.defined = true;
      symbol.alternateEntry = record.description & kAlternateEntry;
      symbol.weakDefinition = record.description & kWeakDefinition;
      symbol.section = record.section - 1;
      symbol.offset = record.value - section.address;
      if (symbol.offset > section.size)
        throw FormatError("malformed: " + name + " lies outside of its section");
    } else if (type != kUndefined) {
      throw FormatError("the symbol " + name +
                        " has a fixed address or stands for another; define it as usual");
    } else if (record.value) {
      throw FormatError("the symbol " + name + " is a common one; compile with -fno-common");
    } else {
      symbol.weakReference = record.description & kWeakReference;
    }
    return symbol;
  }

  void readPointers(uint32_t index) {
    InputSection& section = object_.sections[index];
    if (dynamicTable_.indirectCount > file_.size() / 4)
      throw FormatError("malformed: its indirect table is too long");
    const Bytes table = file_.slice(dynamicTable_.indirectOffset, dynamicTable_.indirectCount * 4);
    for (uint32_t i = 0; i < section.size / 4; ++i) {
      const auto symbol = table.read<uint32_t>((records_[index].reserved1 + i) * 4);
      if (symbol & (kIndirectLocal | kIndirectAbsolute)) {
        const uint32_t address = Bytes(section.bytes.data(), section.bytes.size()).read<uint32_t>(i * 4);
        section.pointers.push_back(placeAt(object_, address));
      } else if (symbol < object_.symbols.size()) {
        section.pointers.push_back({Place::kSymbol, symbol, 0});
      } else {
        throw FormatError("malformed: a pointer of " + section.label() + " has no symbol");
      }
    }
  }

  Bytes file_;
  Object object_;
  std::vector<SectionRecord> records_;
  SymbolTableCommand symbolTable_ = {};
  DynamicSymbolTableCommand dynamicTable_ = {};
};

}  // namespace

std::string Object::nameOf(uint32_t section, uint32_t offset) const {
  const InputSymbol* nearest = nullptr;
  for (const InputSymbol& symbol : symbols) {
    if (!symbol.defined || symbol.section != section || symbol.offset > offset) continue;
    if (!nearest || symbol.offset > nearest->offset) nearest = &symbol;
  }
  return nearest ? nearest->name : "the start of the section";
}

Object readObject(const std::string& path) {
  return readObjectContents(path, readWholeFile(path));
}

Object readObjectContents(const std::string& path, std::span<const uint8_t> contents) {
  try {
    return ObjectReader(path, Bytes(contents.data(), contents.size())).read();
  } catch (const FormatError& error) {
    const std::string what = error.what();
    const bool advises = what.find("; ") != std::string::npos;
    throw LinkError(path, what + (advises ? "" : "; compile it again"));
  }
}

}  // namespace macho
