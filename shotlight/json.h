// JSON.
#pragma once

#include <string>

#include "standin/host/host.h"

namespace shotlight {

// A JSON string, quotes included.
std::string jsonString(const std::string& utf8);

// Dates and bytes are strings, as plainText has them; nothing, and what has no form in JSON, is null. What
// comes on a line of its own is indented by two spaces for each level from `level` on.
std::string json(const standin::host::Value& value, int level);

std::string jsonIndent(int level);

}  // namespace shotlight
