// How much the slow tests do.
#pragma once

#include <cstdlib>
#include <string_view>

// ./test --long
inline bool isLongTier() {
  const char* const tier = std::getenv("TEST_TIER");
  return tier && std::string_view(tier) == "long";
}
