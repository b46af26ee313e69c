// Paths of file URLs, for the stand-ins that work with files.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>

#include "standin/gate/gate.h"

namespace standin {

// The absolute path in bytes, without a slash at its end (except "/"); nothing for a URL of another scheme.
// Ends the process in the name of `call` when `url` isn't a URL.
STANDIN_API std::optional<std::string> pathOfURL(const char* call, CFURLRef url);

}  // namespace standin
