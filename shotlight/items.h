// From a path to its metadata item.
#pragma once

#include <string>

#include "shotlight/interrupts.h"
#include "standin/host/host.h"

namespace shotlight {

// The item class makes no items out of nothing: a query that looks at nothing but the file finds it. Symbolic
// links are items of their own. Nil when it was interrupted. Throws FileError, which names the file, when
// there is none.
standin::host::Value itemOf(const std::string& file, Interrupts& interrupts);

// The absolute path by which `file` is found: its folder's real path and its own name. Throws FileError.
std::string itemPath(const std::string& file);

}  // namespace shotlight
