// What the members of the language's own classes share with the rest.
#pragma once

#include <string>

#include "standin/host/value.h"

namespace standin::host {

// Seconds since 1904-01-01, as the date's clock counts them.
double totalSeconds(const Value& date);
Value sqlDateTime(const Value& date);
// The file of that name, which may be relative to the current folder.
Value folderItemAt(const std::string& path);

}  // namespace standin::host
