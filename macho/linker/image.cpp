#include "macho/linker/image.h"

#include <cstring>

#include "macho/format/format.h"

namespace macho {
namespace {

constexpr uint32_t kRoomForNames = 256;
constexpr uint32_t kOwnCompatibility = 0x10000;  // 1.0.0, as the linker's default elsewhere

uint32_t dylibCommandSize(const std::string& installName) {
  return roundUp(static_cast<uint32_t>(sizeof(DylibCommand) + installName.size() + 1), 4);
}

template <size_t size>
void setName(char (&field)[size], const std::string& name) {
  std::memcpy(field, name.data(), std::min(size, name.size()));
}

// FNV-1a, twice with different beginnings: enough to tell builds apart, which is what the UUID is for.
uint64_t hash(const std::vector<uint8_t>& bytes, uint64_t value) {
  for (const uint8_t byte : bytes) value = (value ^ byte) * 0x100000001B3;
  return value;
}

class ImageMaker {
 public:
  ImageMaker(const Options& options, const ImportList& list, const Layout& layout)
      : options_(options), list_(list), layout_(layout) {}

  std::vector<uint8_t> make(const Symbols& symbols, const LoadTimeWork& work,
                            const std::vector<Export>& exports) {
    linkedit_ = layout_.data.address + layout_.data.fileSize;
    file_.resize(linkedit_);
    addLinkedit(symbols, work, exports);
    addSegments();
    addDylib(kIdDylib, {options_.installName, options_.currentVersion, kOwnCompatibility, false});
    addCommand(kDyldInfoOnly, info_);
    addCommand(kSymbolTable, symbolTable_);
    addCommand(kDynamicSymbolTable, dynamicTable_);
    const size_t uuidOffset = sizeof(Header) + commands_.size() + sizeof(Command);
    addCommand(kUUID, UUIDCommand{});
    addCommand(kMinimumMacOS, MinimumVersionCommand{{}, options_.minimumSystem, options_.minimumSystem});
    for (const Library& library : list_.libraries) {
      addDylib(library.weak ? kLoadWeakDylib : kLoadDylib, library);
    }
    placeHeader();
    placeSections();
    placeUUID(uuidOffset);
    return std::move(file_);
  }

 private:
  template <typename Record>
  void addCommand(uint32_t kind, Record record, uint32_t size = sizeof(Record)) {
    record.command = {kind, size};
    append(commands_, record);
    ++commandCount_;
  }

  void addDylib(uint32_t kind, const Library& library) {
    constexpr uint32_t kUnusedTime = 2;
    const uint32_t size = dylibCommandSize(library.installName);
    addCommand(
        kind,
        DylibCommand{
            {}, sizeof(DylibCommand), kUnusedTime, library.currentVersion, library.compatibilityVersion},
        size);
    commands_.insert(commands_.end(), library.installName.begin(), library.installName.end());
    commands_.resize(commands_.size() + size - sizeof(DylibCommand) - library.installName.size());
  }

  void addSegments() {
    addSegment("__TEXT", layout_.text, kRead | kExecute);
    addSegment("__DATA", layout_.data, kRead | kWrite);
    SegmentCommand segment = {};
    setName(segment.name, "__LINKEDIT");
    const auto size = static_cast<uint32_t>(file_.size()) - linkedit_;
    segment.address = layout_.data.address + layout_.data.memorySize;
    segment.memorySize = roundUp(size, kPageSize);
    segment.fileOffset = linkedit_;
    segment.fileSize = size;
    segment.maximumProtection = kRead | kWrite | kExecute;
    segment.protection = kRead;
    addCommand(kSegment, segment);
  }

  void addSegment(const char* name, const OutputSegment& output, uint32_t protection) {
    SegmentCommand segment = {};
    setName(segment.name, name);
    segment.address = output.address;
    segment.memorySize = output.memorySize;
    segment.fileOffset = output.address;
    segment.fileSize = output.fileSize;
    segment.maximumProtection = kRead | kWrite | kExecute;
    segment.protection = protection;
    segment.sectionCount = static_cast<uint32_t>(output.sections.size());
    const size_t size = sizeof segment + output.sections.size() * sizeof(SectionRecord);
    addCommand(kSegment, segment, static_cast<uint32_t>(size));
    for (const OutputSection& section : output.sections) addSection(section);
  }

  void addSection(const OutputSection& section) {
    SectionRecord record = {};
    setName(record.name, section.name);
    setName(record.segment, section.segment);
    record.address = section.address;
    record.size = section.size;
    record.offset = section.zeroFill() ? 0 : section.address;
    record.alignment = static_cast<uint32_t>(std::countr_zero(section.alignment));
    record.flags = section.flags;
    record.reserved1 = section.reserved1;
    record.reserved2 = section.reserved2;
    append(commands_, record);
  }

  // The order is that in which tools look for the parts.
  void addLinkedit(const Symbols& symbols, const LoadTimeWork& work, const std::vector<Export>& exports) {
    addBlob(rebaseBlob(work, layout_.data.address), info_.rebaseOffset, info_.rebaseSize);
    addBlob(bindBlob(work, symbols.imports(), layout_.data.address), info_.bindOffset, info_.bindSize);
    addBlob(encodeExports(exports), info_.exportOffset, info_.exportSize);
    const SymbolTable table = encodeSymbols(exports, symbols.imports(), layout_);
    addBlob(table.symbols, symbolTable_.symbolOffset, symbolTable_.symbolCount);
    symbolTable_.symbolCount /= sizeof(SymbolRecord);
    addBlob(table.indirect, dynamicTable_.indirectOffset, dynamicTable_.indirectCount);
    dynamicTable_.indirectCount /= sizeof(uint32_t);
    addBlob(table.strings, symbolTable_.stringOffset, symbolTable_.stringSize);
    dynamicTable_.definedCount = dynamicTable_.undefinedFirst = static_cast<uint32_t>(exports.size());
    dynamicTable_.undefinedCount = static_cast<uint32_t>(symbols.imports().size());
  }

  // An empty blob has offset 0.
  void addBlob(const std::vector<uint8_t>& blob, uint32_t& offset, uint32_t& size) {
    if (blob.empty()) return;
    offset = static_cast<uint32_t>(file_.size());
    size = static_cast<uint32_t>(blob.size());
    file_.insert(file_.end(), blob.begin(), blob.end());
  }

  void placeHeader() {
    const Header header = {kMagic32,
                           kCpuI386,
                           kCpuSubtypeAll,
                           kFileDylib,
                           commandCount_,
                           static_cast<uint32_t>(commands_.size()),
                           kNoUndefined | kForDynamicLinker | kTwoLevel | kNoReexports};
    std::memcpy(file_.data(), &header, sizeof header);
    std::memcpy(file_.data() + sizeof header, commands_.data(), commands_.size());
  }

  void placeSections() {
    for (const OutputSegment* segment : {&layout_.text, &layout_.data}) {
      for (const OutputSection& section : segment->sections) {
        std::copy(section.bytes.begin(), section.bytes.end(), file_.begin() + section.address);
      }
    }
  }

  void placeUUID(size_t offset) {
    const uint64_t halves[] = {hash(file_, 0xCBF29CE484222325), hash(file_, 0x9AE16A3B2F90404F)};
    uint8_t* uuid = file_.data() + offset;
    std::memcpy(uuid, halves, sizeof halves);
    uuid[6] = (uuid[6] & 0x0F) | 0x80;  // version 8: made by a rule of its own
    uuid[8] = (uuid[8] & 0x3F) | 0x80;
  }

  const Options& options_;
  const ImportList& list_;
  const Layout& layout_;
  uint32_t linkedit_ = 0;
  uint32_t commandCount_ = 0;
  std::vector<uint8_t> file_, commands_;
  DyldInfoCommand info_ = {};
  SymbolTableCommand symbolTable_ = {};
  DynamicSymbolTableCommand dynamicTable_ = {};
};

}  // namespace

uint32_t headerSize(const Options& options, const ImportList& list, size_t sectionCount) {
  size_t size = sizeof(Header) + 3 * sizeof(SegmentCommand) + sectionCount * sizeof(SectionRecord) +
                sizeof(DyldInfoCommand) + sizeof(SymbolTableCommand) + sizeof(DynamicSymbolTableCommand) +
                sizeof(UUIDCommand) + sizeof(MinimumVersionCommand) + dylibCommandSize(options.installName);
  for (const Library& library : list.libraries) size += dylibCommandSize(library.installName);
  return static_cast<uint32_t>(size) + kRoomForNames;
}

std::vector<uint8_t> makeImage(const Options& options, const ImportList& list, const Symbols& symbols,
                               const Layout& layout, const LoadTimeWork& work,
                               const std::vector<Export>& exports) {
  return ImageMaker(options, list, layout).make(symbols, work, exports);
}

}  // namespace macho
