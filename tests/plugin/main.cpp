#include <gtest/gtest.h>

#include <cstdio>
#include <string_view>

#include "tests/plugin/fixture.h"

std::string pluginPath;

// An old host's tables are kept for the life of the process on purpose; once the plug-in is unloaded the leak
// sanitizer loses sight of them.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:PluginTest::startWith\n";
}

int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  constexpr std::string_view option = "--plugin=";
  for (int i = 1; i < count; ++i) {
    const std::string_view word = words[i];
    if (word.starts_with(option)) pluginPath = word.substr(option.size());
  }
  if (pluginPath.empty()) {
    std::fprintf(stderr, "usage: %s --plugin=FILE [GoogleTest's options]\n", words[0]);
    return 2;
  }
  return RUN_ALL_TESTS();
}
