#include "macho/debugger/debug_elf.h"

#include <elf.h>

#include <string>

#include "macho/format/format.h"

namespace macho {
namespace {

template <typename Record>
void append(std::vector<uint8_t>& bytes, const Record* records, size_t count) {
  const auto* data = reinterpret_cast<const uint8_t*>(records);
  bytes.insert(bytes.end(), data, data + count * sizeof(Record));
}

class Converter {
 public:
  explicit Converter(Bytes dsym) : dsym_(dsym), file_(sizeof(Elf32_Ehdr)), headers_(1) {}

  std::vector<uint8_t> convert() {
    readCommands();
    addNames();
    file_.resize((file_.size() + 3) / 4 * 4);
    Elf32_Ehdr header = {};
    std::memcpy(header.e_ident, ELFMAG, SELFMAG);
    header.e_ident[EI_CLASS] = ELFCLASS32;
    header.e_ident[EI_DATA] = ELFDATA2LSB;
    header.e_ident[EI_VERSION] = EV_CURRENT;
    header.e_type = ET_DYN;
    header.e_machine = EM_386;
    header.e_version = EV_CURRENT;
    header.e_shoff = static_cast<Elf32_Off>(file_.size());
    header.e_ehsize = sizeof header;
    header.e_shentsize = sizeof(Elf32_Shdr);
    header.e_shnum = static_cast<Elf32_Half>(headers_.size());
    header.e_shstrndx = static_cast<Elf32_Half>(headers_.size() - 1);
    append(file_, headers_.data(), headers_.size());
    std::memcpy(file_.data(), &header, sizeof header);
    return std::move(file_);
  }

 private:
  void readCommands() {
    const auto header = dsym_.read<Header>(0);
    if (header.magic != kMagic32 || header.cpuType != kCpuI386 || header.fileType != kFileDebug) {
      throw FormatError("not a dSYM file for i386");
    }
    size_t offset = sizeof header;
    for (uint32_t i = 0; i < header.commandCount; ++i) {
      const auto command = dsym_.read<Command>(offset);
      if (command.size < sizeof command) throw FormatError("malformed: a load command has no size");
      if (command.kind == kSegment) readSegment(dsym_.slice(offset, command.size));
      offset += command.size;
    }
  }

  void readSegment(Bytes command) {
    const auto segment = command.read<SegmentCommand>(0);
    for (uint32_t i = 0; i < segment.sectionCount; ++i) {
      addSection(command.read<SectionRecord>(sizeof segment + i * sizeof(SectionRecord)));
    }
  }

  // "__debug_info" of Mach-O is ".debug_info" of ELF, "__text" is ".text".
  void addSection(const SectionRecord& section) {
    std::string name = fixedName(section.name);
    if (name.starts_with("__")) name.replace(0, 2, ".");
    Elf32_Shdr header = {};
    header.sh_size = section.size;
    header.sh_addralign = 1;
    if (fixedName(section.segment) == "__DWARF") {
      // Others hold indexes for debuggers of the Mac.
      if (!name.starts_with(".debug_")) return;
      const Bytes contents = dsym_.slice(section.offset, section.size);
      header.sh_type = SHT_PROGBITS;
      header.sh_offset = static_cast<Elf32_Off>(file_.size());
      append(file_, contents.data(), contents.size());
    } else {
      const bool isCode = section.flags & kPureInstructions;
      header.sh_type = SHT_NOBITS;
      header.sh_addr = section.address;
      header.sh_flags = SHF_ALLOC | (isCode ? SHF_EXECINSTR : 0);
    }
    addHeader(name, header);
  }

  void addHeader(const std::string& name, Elf32_Shdr header) {
    if (headers_.size() == SHN_LORESERVE - 1) throw FormatError("malformed: it has too many sections");
    header.sh_name = static_cast<Elf32_Word>(names_.size());
    names_ += name + '\0';
    headers_.push_back(header);
  }

  void addNames() {
    Elf32_Shdr header = {};
    header.sh_type = SHT_STRTAB;
    header.sh_offset = static_cast<Elf32_Off>(file_.size());
    header.sh_addralign = 1;
    addHeader(".shstrtab", header);
    headers_.back().sh_size = static_cast<Elf32_Word>(names_.size());
    append(file_, names_.data(), names_.size());
  }

  Bytes dsym_;
  std::vector<uint8_t> file_;
  std::vector<Elf32_Shdr> headers_;  // the first says that there is none
  std::string names_ = std::string(1, '\0');
};

}  // namespace

std::vector<uint8_t> makeDebugELF(Bytes dsym) {
  return Converter(dsym).convert();
}

}  // namespace macho
