// Names of files on a file system that compares them byte by byte.
#pragma once

#include <optional>
#include <string>

#include "standin/gate/gate.h"

namespace standin {

// Whether there is an entry of that path; a link that leads nowhere is one.
bool isThere(const std::string& path);

// The path by which the file at the absolute `path` is found: the same bytes where they name a file; else,
// name by name, the composed or the decomposed form of what the path says, as the Mac's file systems find
// both under either. Nothing when no file is there.
STANDIN_API std::optional<std::string> existingPath(const std::string& path);

// The one path of a file that is there: no symbolic link, no `.` and no `..` on the way to it. A link itself
// is not followed.
std::string canonicalPath(const std::string& path);

}  // namespace standin
