// The symbols of libraries, and the names that headers declare.
#pragma once

#include <set>
#include <string>

using Names = std::set<std::string>;

enum class Symbols {
  Exported,   // without the copies of templates, which every library may have
  Undefined,  // of a shared library
  UndefinedOfArchive
};

// Without the address sanitizer's marks. Throws std::runtime_error when the tool can't read the file.
Names symbolsOf(const std::string& library, Symbols which);

// The functions and data that a header marks with CF_EXPORT. Throws when the file can't be read.
Names declaredIn(const std::string& header);
Names declaredInFolder(const std::string& folder);
