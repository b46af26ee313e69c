#include "tests/support/main.h"

#include "tests/shotlight/run.h"

const std::vector<FileOption> fileOptions = {{"program", &files.program},
                                             {"dylib", &files.dylib},
                                             {"elf", &files.elf},
                                             {"empty-plugin", &files.emptyPlugin},
                                             {"other-library", &files.otherLibrary},
                                             {"library", &files.library},
                                             {"gdb-script", &files.gdbScript}};
