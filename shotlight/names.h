// Names and paths of files, which are bytes.
#pragma once

#include <string>

#include "standin/host/host.h"

namespace shotlight {

// The item's path, in bytes.
std::string pathOf(const standin::host::Value& item);

// Whether the attribute is a name or a path.
bool isFileName(const std::string& key);

// Whether the value of such an attribute, as it was told, may be another name: nearly none has a percent
// sign, and without one it is exact.
bool mayBeInexact(const standin::host::Value& told);
// The value of such an attribute as the file system has it. The metadata service tells it as text, in which a
// byte that is no UTF-8 reads "%FF"; the result is a string of the very bytes, whatever its encoding says.
standin::host::Value exactName(const standin::host::Value& item, const std::string& key,
                               const standin::host::Value& told);

}  // namespace shotlight
