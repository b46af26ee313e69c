// Where what is read in files is kept.
#pragma once

#include <string>

namespace shotlight {

// $XDG_CACHE_HOME/shotlight, or ~/.cache/shotlight. Empty where there is neither.
std::string storeFolder();

// For commands that ask what is in files, before they do. Without the store, what is read is kept in memory.
void useStore(bool onDisk);

}  // namespace shotlight
