#include "shotlight/plugin_check.h"

#include <elf.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "shotlight/errors.h"

namespace shotlight {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw CommandError("the plug-in '" + path + "': " + what);
}

// Zeros where the file ends early.
template <class Record>
Record recordAt(std::ifstream& file, uint64_t offset) {
  Record record{};
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  file.read(reinterpret_cast<char*>(&record), sizeof record);
  return record;
}

void checkSize(const std::string& path, uint64_t wanted, uint64_t size) {
  if (wanted <= size) return;
  fail(path, "cut short: " + std::to_string(wanted) + " bytes are wanted of " + std::to_string(size) +
                 "; build or copy the file again");
}

void checkELF(const std::string& path, std::ifstream& file, uint64_t size) {
  const auto header = recordAt<Elf32_Ehdr>(file, 0);
  checkSize(path, sizeof header, size);
  if (header.e_ident[EI_CLASS] == ELFCLASS64)
    fail(path, "a 64-bit ELF file; build the plug-in for 32 bits (-m32)");
  if (header.e_ident[EI_CLASS] != ELFCLASS32 || header.e_machine != EM_386)
    fail(path, "an ELF file for another machine; build the plug-in for i386");
  if (header.e_type != ET_DYN) fail(path, "an ELF file, but no library; link the plug-in with -shared");
  if (header.e_phentsize != sizeof(Elf32_Phdr))
    fail(path, "an ELF file with a damaged header; build or copy the file again");
  for (uint64_t i = 0; i < header.e_phnum; ++i) {
    const uint64_t offset = header.e_phoff + i * sizeof(Elf32_Phdr);
    checkSize(path, offset + sizeof(Elf32_Phdr), size);
    const auto segment = recordAt<Elf32_Phdr>(file, offset);
    checkSize(path, uint64_t{segment.p_offset} + segment.p_filesz, size);
  }
}

}  // namespace

void checkPluginFile(const std::string& path) {
  std::error_code error;
  const auto status = fs::status(path, error);
  if (!fs::exists(status)) fail(path, error.message() + "; name a plug-in that exists");
  if (fs::is_directory(status)) fail(path, "a folder; name the file of the plug-in");
  // A pipe would keep the program waiting for its other end.
  if (!fs::is_regular_file(status)) fail(path, "not a plain file; name the file of the plug-in");
  std::ifstream file(path, std::ios::binary);
  if (!file) fail(path, std::string(std::strerror(errno)) + "; name a file that you may read");
  const uint64_t size = fs::file_size(path, error);
  if (error) fail(path, error.message() + "; name a file that you may read");
  if (size == 0) fail(path, "an empty file; build or copy the file again");
  const auto magic = recordAt<Elf32_Word>(file, 0);
  if (std::memcmp(&magic, ELFMAG, SELFMAG) == 0) checkELF(path, file, size);
}

}  // namespace shotlight
