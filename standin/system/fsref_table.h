// FSRefs: 80 opaque bytes that name a file.
//
// This process keeps a table of the paths that were ever named; an FSRef holds a mark and a place in the
// table, the other bytes are zero. All paths of one file give the same bytes, so FSRefs can be compared byte
// by byte. An FSRef is good for this process only, and follows no file that is renamed.
//
// The place also gives the file its node, the number by which the catalogue knows it.
#pragma once

#include <CoreServices/CarbonCore/Files.h>

#include <string>

#include "standin/gate/gate.h"

namespace standin {

// `path` is absolute, in bytes. False, and the FSRef untouched, when no file is there.
STANDIN_API bool makeFSRef(const std::string& path, FSRef& ref);

// Null for bytes that this process never made. Good until the process ends. The path is the file's one path:
// no symbolic link leads to it.
STANDIN_API const std::string* pathOfFSRef(const FSRef& ref);

// Nodes: fsRtDirID for "/", from 16 up for all else, as on the Mac's volumes.
STANDIN_API uint32_t nodeOfFSRef(const FSRef& ref);        // `ref` is one that this process made
STANDIN_API const std::string* pathOfNode(uint32_t node);  // null for a node that no FSRef has

}  // namespace standin
