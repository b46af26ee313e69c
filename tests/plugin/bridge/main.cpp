#include <gtest/gtest.h>

#include <cstdio>
#include <string_view>

#include "tests/plugin/bridge/fixture.h"

std::string bridgePath;

// An old host's tables are kept for the life of the process on purpose; once the plug-in is unloaded the leak
// sanitizer loses sight of them.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:BridgeTest::start\n";
}

int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  constexpr std::string_view option = "--bridge=";
  for (int i = 1; i < count; ++i) {
    const std::string_view word = words[i];
    if (word.starts_with(option)) bridgePath = word.substr(option.size());
  }
  if (bridgePath.empty()) {
    std::fprintf(stderr, "usage: %s --bridge=FILE [GoogleTest's options]\n", words[0]);
    return 2;
  }
  return RUN_ALL_TESTS();
}
