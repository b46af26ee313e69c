#pragma once

#include "macho/format/files.h"

namespace macho {

// What stops a link, one line for each thing wrong.
struct LinkError : FileError {
  using FileError::FileError;
};

}  // namespace macho
