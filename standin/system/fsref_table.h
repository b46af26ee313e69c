// FSRefs: 80 opaque bytes that name a file.
//
// This process keeps a table of the paths that were ever named; an FSRef holds a mark and a place in the
// table, the other bytes are zero. The same path always gives the same bytes, so FSRefs can be compared byte
// by byte. An FSRef is good for this process only, and follows no file that is renamed.
#pragma once

#include <CoreServices/CarbonCore/Files.h>

#include <string>

#include "standin/gate/gate.h"

namespace standin {

// `path` is absolute, in bytes. False, and the FSRef untouched, when no file is there.
STANDIN_API bool makeFSRef(const std::string& path, FSRef& ref);

// Null for bytes that this process never made. Good until the process ends.
STANDIN_API const std::string* pathOfFSRef(const FSRef& ref);

}  // namespace standin
