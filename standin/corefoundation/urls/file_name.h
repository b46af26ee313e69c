// Names of files in texts.
#pragma once

#include <optional>
#include <string>

#include "standin/corefoundation/strings/string.h"

namespace cf {

// The bytes of a file name, decomposed as those of the platform are; nothing when the text holds an unpaired
// surrogate.
std::optional<std::string> fileNameOf(Text text);

}  // namespace cf
