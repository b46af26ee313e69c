// linker/: from object files to a dylib, one step after another. Each step has its header; only programs of the build
// use it, as macho-link. Of the project it includes format/ alone.
#pragma once

#include "macho/format/files.h"

namespace macho {

// What stops a link, one line for each thing wrong.
struct LinkError : FileError {
  using FileError::FileError;
};

}  // namespace macho
