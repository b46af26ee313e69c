#include <cstdio>
#include <filesystem>

#include "tests/shotlight/run.h"

namespace {

bool takeArgument(const std::string& argument) {
  const std::pair<const char*, std::string*> known[] = {{"--program=", &files.program},
                                                        {"--dylib=", &files.dylib},
                                                        {"--elf=", &files.elf},
                                                        {"--empty-plugin=", &files.emptyPlugin},
                                                        {"--other-library=", &files.otherLibrary},
                                                        {"--library=", &files.library},
                                                        {"--gdb-script=", &files.gdbScript}};
  for (const auto& [prefix, value] : known) {
    if (!argument.starts_with(prefix)) continue;
    *value = argument.substr(std::string(prefix).size());
    return true;
  }
  return false;
}

}  // namespace

int main(int count, char** words) {
  testing::InitGoogleMock(&count, words);
  for (int i = 1; i < count; ++i) {
    if (takeArgument(words[i])) continue;
    std::fprintf(stderr, "%s: unknown argument '%s'\n", words[0], words[i]);
    return 2;
  }
  for (const std::string* file : {&files.program, &files.dylib, &files.elf, &files.emptyPlugin,
                                  &files.otherLibrary, &files.library, &files.gdbScript}) {
    if (!file->empty()) continue;
    std::fprintf(stderr,
                 "%s: name the files under test: --program=, --dylib=, --elf=, --empty-plugin=, "
                 "--other-library=, --library=, --gdb-script= (ctest -R shotlight does)\n",
                 words[0]);
    return 2;
  }
  files.library = std::filesystem::canonical(files.library);  // as shotlight names what is in it
  return RUN_ALL_TESTS();
}
