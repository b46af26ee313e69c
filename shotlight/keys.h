// The attribute keys.
#pragma once

#include <string>
#include <vector>

namespace shotlight {

// What the item class's shared methods of the keys answer, in the order of its table.
std::vector<std::string> classKeys();

// The key that was probably meant by one that doesn't exist: the same in another letter case, without its
// beginning, or with a letter or two that are wrong, missing or too many. Empty where there is none.
std::string nearestKey(const std::string& key);

// Throws UsageError, in the name of `option`, for a key that neither the class nor the system's schema knows.
void checkKeys(const std::string& option, const std::vector<std::string>& keys);

}  // namespace shotlight
