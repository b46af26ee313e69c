#include "shotlight/plugin_check.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "shotlight/errors.h"
#include "shotlight/text.h"

namespace shotlight {
namespace {

constexpr uint64_t kLargest = 256 << 20;  // of what is read whole into memory

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw CommandError("the plug-in " + quotedName(path) + ": " + what);
}

class File {
 public:
  // Empty where it can't be opened, as errno tells.
  explicit File(const std::string& path) : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  explicit operator bool() const { return descriptor_ >= 0; }

  // Zeros where the file ends early.
  template <class Record>
  Record recordAt(uint64_t offset) const {
    Record record{};
    if (::pread(descriptor_, &record, sizeof record, static_cast<off_t>(offset)) < 0) return {};
    return record;
  }

 private:
  const int descriptor_;
};

void checkSize(const std::string& path, uint64_t wanted, uint64_t size) {
  if (wanted <= size) return;
  fail(path, "cut short: " + std::to_string(wanted) + " bytes are wanted of " + std::to_string(size) +
                 "; build or copy the file again");
}

void checkELF(const std::string& path, const File& file, uint64_t size) {
  const auto header = file.recordAt<Elf32_Ehdr>(0);
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
    const auto segment = file.recordAt<Elf32_Phdr>(offset);
    checkSize(path, uint64_t{segment.p_offset} + segment.p_filesz, size);
  }
}

}  // namespace

void checkPluginFile(const std::string& path) {
  // The system's own calls: those of the C++ library know no file of before 1901 or after 2038 here.
  struct stat info;
  if (::stat(path.c_str(), &info) != 0)
    fail(path, std::string(std::strerror(errno)) + "; name a plug-in that exists");
  if (S_ISDIR(info.st_mode)) fail(path, "a folder; name the file of the plug-in");
  // A pipe would keep the program waiting for its other end.
  if (!S_ISREG(info.st_mode)) fail(path, "not a plain file; name the file of the plug-in");
  const File file(path);
  if (!file) fail(path, std::string(std::strerror(errno)) + "; name a file that you may read");
  const auto size = static_cast<uint64_t>(info.st_size);
  if (size == 0) fail(path, "an empty file; build or copy the file again");
  if (size > kLargest)
    fail(path, std::to_string(size) + " bytes, more than any plug-in has; name the plug-in's file");
  const auto magic = file.recordAt<Elf32_Word>(0);
  if (std::memcmp(&magic, ELFMAG, SELFMAG) == 0) checkELF(path, file, size);
}

}  // namespace shotlight
