// The debug map: which address each symbol of each object got. dsymutil follows it from the dylib back to the
// objects, whose debug information stays out of the dylib.
#pragma once

#include <string>
#include <vector>

#include "macho/linker/layout.h"
#include "macho/linker/object.h"

namespace macho {

// As dsymutil's YAML (its option -y). `dylib` is the path of what the objects were linked to.
std::string makeDebugMap(const std::string& dylib, const std::vector<Object>& objects, const Layout& layout);

}  // namespace macho
