// An audit of the finished dylib. It reads the file with llvm-objdump only, nothing of the linker that made
// it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tests/audit/lists.h"

namespace audit {

// What is wrong with the dylib, a sentence each; empty when it is as it should be: an i386 dylib for
// macOS 10.6 that exports _REALPluginMain alone, has no static initialiser, has its segments and sections
// where their alignment wants them, changes nothing in its text at load time, loads CoreServices weakly with
// every metadata constant a weak import, imports what the list says and no more, nothing strongly that its
// minimum system lacks, and takes no more than kLargestSize. Throws std::runtime_error when one of the files
// can't be read.
std::vector<std::string> findings(const std::string& dylib, const Lists& lists);

inline constexpr size_t kLargestSize = 96 * 1024;  // in bytes, of the file

// Where the bytes of the dylib's file are: a line for each segment, its sections or the tables of __LINKEDIT
// below it, and the whole beside kLargestSize. What lies in no section is the header, and what fills up
// pages. Throws std::runtime_error.
std::string sizeTable(const std::string& dylib);

}  // namespace audit
