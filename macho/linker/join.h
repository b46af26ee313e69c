// Keeps one of each constant that several objects have.
#pragma once

#include <vector>

#include "macho/linker/object.h"
#include "macho/linker/symbols.h"

namespace macho {

// Of equal strings, number literals, exception tables and common frame records only the first stays, and the
// others stand for it. These are constants whose addresses mean nothing: strings and literals by what C++
// says of them, the tables because the unwinder only reads them. Two are equal when their bytes are and their
// addresses lead to the same places. Variables, functions and arrays are left alone: each has an address of
// its own.
//
// A string that is the end of another one stays: S_CSTRING_LITERALS says that each literal is there for
// itself, and tools count on it.
void joinEqualConstants(std::vector<Object>& objects, const Symbols& symbols);

}  // namespace macho
