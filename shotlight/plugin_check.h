// What is looked at before a plug-in's file is opened.
#pragma once

#include <string>

namespace shotlight {

// Throws CommandError for what is no plain file that can be read, or too large, and for an ELF file of the
// wrong kind or cut short: the system's dynamic linker reads past the end of such a file, which ends the
// process.
void checkPluginFile(const std::string& path);

}  // namespace shotlight
