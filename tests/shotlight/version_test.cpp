// --version
#include <cstdint>
#include <fstream>
#include <iterator>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

// Its own line; the commit is told where it is known.
const std::string kProgram = "shotlight " PROJECT_VERSION "( \\(commit [0-9a-f]{12}(, changed)?\\))?\n";

Result version(std::vector<std::string> arguments = {}) {
  arguments.insert(arguments.begin(), "--version");
  return run({.arguments = std::move(arguments)});
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

uint32_t wordAt(const std::string& text, size_t offset) {
  uint32_t word = 0;
  text.copy(reinterpret_cast<char*>(&word), sizeof word, offset);
  return word;
}

// Where a dylib has its current version: in the load command that names it.
size_t versionOffset(const std::string& dylib) {
  constexpr size_t kHeader = 28, kVersion = 16;
  constexpr uint32_t kOwnName = 0xD;
  size_t offset = kHeader;
  while (offset < dylib.size() && wordAt(dylib, offset) != kOwnName) offset += wordAt(dylib, offset + 4);
  return offset + kVersion;
}

TEST(Version, IsThatOfTheProgramAndThatOfThePlugin) {
  const Result result = version();
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(matches(result.output, kProgram + "SpotlightZNK " PROJECT_VERSION "\n"));
  EXPECT_EQ(result.errors, "");
}

TEST(Version, OfThePluginIsInItsFile) {
  const ScratchFolder scratch;
  std::string dylib = contentOf(files.dylib);
  dylib.replace(versionOffset(dylib), 4, std::string("\x05\x04\x2C\x01", 4));
  EXPECT_TRUE(matches(version({"--plugin", scratch.file("other.dylib", dylib)}).output,
                      kProgram + "SpotlightZNK 300.4.5\n"));
  EXPECT_TRUE(matches(version({"--plugin=" + files.elf}).output,
                      kProgram + "SpotlightZNK \\(its file tells no version\\)\n"));
}

TEST(Version, TakesNothingElse) {
  expectError(version({"find"}), "--version takes no 'find'; leave it out");
  expectError(version({"--nonsense"}), "unknown option '--nonsense'; see shotlight --help");
}

TEST(Version, IsToldAlsoWhereThePluginIsNone) {
  const Result result = version({"--plugin", "/none"});
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(matches(result.output, kProgram));
  EXPECT_TRUE(startsWith(result.errors, "shotlight: the plug-in '/none': "));
}

}  // namespace
