// linker/: from object files to a dylib, one step after another: the program macho-link. Of the project it
// includes format/ alone. This header is what every step shares.
#pragma once

#include "macho/format/files.h"

namespace macho {

// What stops a link, one line for each thing wrong.
struct LinkError : FileError {
  using FileError::FileError;
};

}  // namespace macho
