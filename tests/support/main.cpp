#include "tests/support/main.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string_view>

namespace {

bool isTaken(std::string_view word) {
  for (const FileOption& option : fileOptions) {
    const std::string prefix = "--" + std::string(option.name) + "=";
    if (!word.starts_with(prefix)) continue;
    *option.file = word.substr(prefix.size());
    return true;
  }
  return false;
}

bool isComplete() {
  for (const FileOption& option : fileOptions) {
    if (option.file->empty()) return false;
  }
  return true;
}

int explain(const char* program) {
  std::fprintf(stderr, "usage: %s", program);
  for (const FileOption& option : fileOptions) std::fprintf(stderr, " --%s=FILE", option.name);
  std::fprintf(stderr, " [GoogleTest's options]\n");
  return 2;
}

}  // namespace

int main(int count, char** words) {
  int kept = 1;
  for (int i = 1; i < count; ++i) {
    if (!isTaken(words[i])) words[kept++] = words[i];
  }
  words[kept] = nullptr;
  testing::InitGoogleTest(&kept, words);
  if (kept > 1) std::fprintf(stderr, "%s: unknown argument '%s'\n", words[0], words[1]);
  return kept > 1 || !isComplete() ? explain(words[0]) : RUN_ALL_TESTS();
}
