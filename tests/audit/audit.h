// An audit of the finished dylib. It reads the file with llvm-objdump only, nothing of the linker that made
// it.
#pragma once

#include <string>
#include <vector>

namespace audit {

// What is wrong with the dylib, a sentence each; empty when it is as it should be: an i386 dylib for
// macOS 10.6 that exports _REALPluginMain alone, has no static initialiser, changes nothing in its text at
// load time, loads CoreServices weakly with every metadata constant a weak import, and imports what the list
// says and no more. Throws std::runtime_error when one of the files can't be read.
std::vector<std::string> findings(const std::string& dylib, const std::string& importList);

}  // namespace audit
