// Turns an object's relocations, and the addresses that its assembler already resolved in __eh_frame, into
// fixups.
#pragma once

#include <vector>

#include "macho/format/bytes.h"
#include "macho/format/format.h"
#include "macho/linker/object.h"

namespace macho {

// The place of an address that a relocation names. Where a weak definition begins it is that symbol, since
// another object's copy may be the one that stays; elsewhere it is a spot in a section, also behind a weak
// definition: unnamed data follow one as they follow any. Throws FormatError.
Place placeAt(const Object& object, uint32_t address);

// Fills in the fixups of every section, from the section records in the same order. Throws FormatError.
void readFixups(Object& object, Bytes file, const std::vector<SectionRecord>& records);

}  // namespace macho
