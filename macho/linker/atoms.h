// Divides an object into atoms, the parts that a linker may leave out or join with equal ones for themselves:
// a function, a variable, a literal, a pointer, a record of __eh_frame.
#pragma once

#include "macho/linker/object.h"

namespace macho {

// Each section becomes one section or more, in the same order; symbols, fixups and places follow.
//
// Functions and variables are told apart only where the object says that its symbols divide it
// (MH_SUBSECTIONS_VIA_SYMBOLS): then its compiler has used no distance between two of them without a
// relocation. Literals, pointers and frame records are divided by what they are. Throws FormatError.
void splitIntoAtoms(Object& object);

}  // namespace macho
