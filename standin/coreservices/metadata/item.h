// Items: files, each by its path.
#pragma once

#include <string>

#include "standin/coreservices/services.h"

namespace standin::metadata {

// `path` is absolute, in bytes, and as the search finds it: no symbolic link on the way to the file. The item
// is the caller's. Null when there is no memory.
MDItemRef createItem(CFAllocatorRef allocator, std::string path);

// `item` is known to be one.
const std::string& pathOfItem(MDItemRef item);

void checkItem(const char* call, CFTypeRef item);

}  // namespace standin::metadata
