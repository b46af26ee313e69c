// What the loader needs of a dylib's load commands, checked against the size of the file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "macho/format/bytes.h"
#include "macho/format/format.h"

namespace macho {

struct DylibFile {
  struct Range {
    uint32_t address, size;
  };

  std::vector<SegmentCommand> segments;  // page-aligned, without overlap, contents inside the file
  std::optional<uint32_t> version;       // its own: two bytes, one and one
  Range memory;                          // from the lowest segment to the end of the highest
  std::vector<std::string> libraries;    // install names; ordinal 1 is the first
  bool reexportsLibraries = false;
  std::optional<Range> frames;      // the __eh_frame section
  std::optional<Range> stubHelper;  // the code that has stubs bound at their first call
  std::vector<Range> lazyPointers;  // where stubs go: into the helper, until they are bound
  Bytes rebases, binds, lazyBinds, exports;
};

// `file` must outlive the result. Throws FormatError.
DylibFile readDylib(Bytes file);

}  // namespace macho
