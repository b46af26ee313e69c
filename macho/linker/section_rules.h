// What becomes of each section that an object may have.
#pragma once

#include <span>

#include "macho/linker/object.h"

namespace macho {

// A section of the dylib, in the order of the table, and which section of the objects goes there.
struct SectionRule {
  const char* segment;
  const char* name;     // in the objects
  const char* becomes;  // in the dylib
  uint32_t flags;       // in the dylib
};
std::span<const SectionRule> sectionRules();

// Sections that describe the code for other tools and are left out of the dylib.
bool isDropped(const InputSection& section);

// Throws FormatError, with the remedy, for a section that is neither in the table nor dropped.
void requireKnown(const InputSection& section);

}  // namespace macho
