// The attribute keys.
#pragma once

#include <string>
#include <vector>

namespace shotlight {

// What the item class's shared methods of the keys answer, in the order of its table.
std::vector<std::string> classKeys();

// Throws UsageError, in the name of `option`, for a key that neither the class nor the system's schema knows.
void checkKeys(const std::string& option, const std::vector<std::string>& keys);

}  // namespace shotlight
