// macho-debug-elf: gives what dsymutil made (a Mach-O file) to debuggers that read ELF only.
#include <iostream>
#include <new>

#include "macho/debugger/debug_elf.h"
#include "macho/format/bytes.h"
#include "macho/format/files.h"

namespace {

void convert(const std::string& dsym, const std::string& elf) {
  const std::vector<uint8_t> contents = macho::readWholeFile(dsym);
  try {
    macho::writeWholeFile(elf, macho::makeDebugELF(macho::Bytes(contents.data(), contents.size())));
  } catch (const macho::FormatError& error) {
    throw macho::FileError(dsym, std::string(error.what()) + "; make it again with dsymutil --flat");
  }
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) {
    std::cerr << "usage: macho-debug-elf DSYM ELF\n";
    return 2;
  }
  try {
    convert(words[1], words[2]);
    return 0;
  } catch (const macho::FileError& error) {
    std::cerr << "macho-debug-elf: " << error.what() << "\n";
  } catch (const std::bad_alloc&) {
    std::cerr << "macho-debug-elf: out of memory; close other programs\n";
  }
  return 1;
}
