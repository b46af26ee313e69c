// How much the slow tests do.
#pragma once

#include <cstdlib>
#include <string_view>

// ./test --long
inline bool isLongTier() {
  const char* const tier = std::getenv("TEST_TIER");
  return tier && std::string_view(tier) == "long";
}

// Under the sanitizers, where everything takes many times as long, sweeps over all services and calls are
// made on one or two hosts instead of all, but for the long tier. The plain build makes them on all.
inline bool sweepsFewerHosts() {
#ifdef __SANITIZE_ADDRESS__
  return !isLongTier();
#else
  return false;
#endif
}
