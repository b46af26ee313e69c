// The ELF file of a dylib's debug information: what becomes of each section, and damaged input.
#include "macho/debugger/debug_elf.h"

#include <elf.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "macho/format/format.h"

namespace {

using macho::Bytes;

template <typename Record>
void append(std::vector<uint8_t>& bytes, const Record& record) {
  const auto* data = reinterpret_cast<const uint8_t*>(&record);
  bytes.insert(bytes.end(), data, data + sizeof record);
}

macho::SectionRecord section(const char* segment, const char* name) {
  macho::SectionRecord record = {};
  std::strncpy(record.segment, segment, sizeof record.segment);
  std::strncpy(record.name, name, sizeof record.name);
  return record;
}

const char kInfo[] = "debug information";
constexpr uint32_t kContentsOffset =
    sizeof(macho::Header) + sizeof(macho::SegmentCommand) + 3 * sizeof(macho::SectionRecord);

// One segment with code, debug information and an index. `change` damages what it is given.
template <typename Change>
std::vector<uint8_t> makeDSYM(Change change) {
  macho::Header header = {
      macho::kMagic32, macho::kCpuI386, macho::kCpuSubtypeAll, macho::kFileDebug, 1, 0, 0};
  macho::SegmentCommand segment = {};
  segment.command = {macho::kSegment, kContentsOffset - sizeof header};
  segment.sectionCount = 3;
  macho::SectionRecord code = section("__TEXT", "__text"), info = section("__DWARF", "__debug_info"),
                       index = section("__DWARF", "__apple_names");
  code.address = 0x1230;
  code.size = 0x456;
  code.flags = macho::kPureInstructions;
  info.offset = kContentsOffset;
  info.size = sizeof kInfo;
  change(header, segment, info);
  std::vector<uint8_t> bytes;
  append(bytes, header);
  append(bytes, segment);
  for (const auto& record : {code, info, index}) append(bytes, record);
  append(bytes, kInfo);
  return bytes;
}

const auto kUnchanged = [](auto&...) {};

Bytes viewOf(const std::vector<uint8_t>& bytes) {
  return Bytes(bytes.data(), bytes.size());
}

std::map<std::string, Elf32_Shdr> sectionsOf(Bytes elf) {
  const auto header = elf.read<Elf32_Ehdr>(0);
  const auto at = [&](size_t index) {
    return elf.read<Elf32_Shdr>(header.e_shoff + index * sizeof(Elf32_Shdr));
  };
  std::map<std::string, Elf32_Shdr> sections;
  for (size_t i = 1; i < header.e_shnum; ++i)
    sections[elf.text(at(header.e_shstrndx).sh_offset + at(i).sh_name)] = at(i);
  return sections;
}

std::string error(const std::vector<uint8_t>& dsym) {
  try {
    macho::makeDebugELF(viewOf(dsym));
    return "(converted)";
  } catch (const macho::FormatError& error) {
    return error.what();
  }
}

TEST(DebugELF, HasTheAddressesOfTheDylibsSectionsAndTheDebugInformation) {
  const auto elf = macho::makeDebugELF(viewOf(makeDSYM(kUnchanged)));
  auto sections = sectionsOf(viewOf(elf));
  EXPECT_EQ(sections.size(), 3u);
  const Elf32_Shdr code = sections.at(".text");
  EXPECT_EQ(code.sh_type, static_cast<Elf32_Word>(SHT_NOBITS));
  EXPECT_EQ(code.sh_flags, static_cast<Elf32_Word>(SHF_ALLOC | SHF_EXECINSTR));
  EXPECT_EQ(code.sh_addr, 0x1230u);
  EXPECT_EQ(code.sh_size, 0x456u);
  const Elf32_Shdr info = sections.at(".debug_info");
  EXPECT_EQ(info.sh_type, static_cast<Elf32_Word>(SHT_PROGBITS));
  EXPECT_EQ(info.sh_size, sizeof kInfo);
  EXPECT_EQ(viewOf(elf).text(info.sh_offset), kInfo);
}

TEST(DebugELF, IsNotMadeOfAnotherKindOfFile) {
  const char message[] = "not a dSYM file for i386";
  EXPECT_EQ(error(makeDSYM([](auto& header, auto&...) { header.magic = 0x464C457F; })), message);
  EXPECT_EQ(error(makeDSYM([](auto& header, auto&...) { header.cpuType = 12; })), message);
  EXPECT_EQ(error(makeDSYM([](auto& header, auto&...) { header.fileType = macho::kFileDylib; })), message);
}

TEST(DebugELF, IsNotMadeOfADamagedFile) {
  EXPECT_EQ(error(makeDSYM([](auto&, auto& segment, auto&) { segment.command.size = 4; })),
            "malformed: a load command has no size");
  const auto damaged = {
      makeDSYM([](auto& header, auto&...) { header.commandCount = 0xFFFFFFFF; }),
      makeDSYM([](auto&, auto& segment, auto&) { segment.command.size = 0xFFFFFFF0; }),
      makeDSYM([](auto&, auto& segment, auto&) { segment.sectionCount = 0x10000000; }),
      makeDSYM([](auto&, auto&, auto& info) { info.offset = 0xFFFFFFF0; }),
      makeDSYM([](auto&, auto&, auto& info) { info.size = 0xFFFFFFF0; }),
  };
  for (const auto& dsym : damaged) EXPECT_EQ(error(dsym).substr(0, 11), "truncated: ");
}

TEST(DebugELF, IsNotMadeOfAFileCutShortAnywhere) {
  const auto whole = makeDSYM(kUnchanged);
  for (size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(error({whole.begin(), whole.begin() + static_cast<long>(length)}).substr(0, 11), "truncated: ")
        << length;
  }
}

}  // namespace
