// JSON.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "standin/host/host.h"

namespace shotlight {

// The level of what is all on one line.
inline constexpr int kJsonOneLine = -1;

// A JSON string, quotes included. What disturbs a terminal is escaped (standin::disturbs). A byte that is no
// UTF-8 is the lone surrogate U+DC80 to U+DCFF, so that it is told from every character and can be had back.
std::string jsonString(const std::string& utf8);

// Dates and bytes are strings, as plainText has them; nothing, and what has no form in JSON, is null. What
// comes on a line of its own is indented by two spaces for each level from `level` on.
std::string json(const standin::host::Value& value, int level);

using JsonMembers = std::vector<std::pair<std::string, standin::host::Value>>;
std::string jsonObject(const JsonMembers& members, int level);

// The start of a line of that level.
std::string jsonIndent(int level);

}  // namespace shotlight
