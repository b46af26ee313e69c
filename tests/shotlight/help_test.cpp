// The help, and that what it promises is so.
#include <cstdlib>
#include <filesystem>

#include "run.h"
#include "tests/metadata/scratch_folder.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

std::vector<std::string> examples() {
  std::vector<std::string> result;
  for (const std::string& line : lines(run({.arguments = {"--help"}}).output)) {
    if (line.starts_with("  shotlight find '")) result.push_back(line.substr(2));
  }
  return result;
}

// The example as a shell runs it, with the program on the search path.
Result runInShell(const std::string& example, const ScratchFolder& home) {
  const std::string folder = std::filesystem::path(files.program).parent_path();
  return run({.arguments = {"-c", example},
              .folder = home.path(),
              .program = "/bin/sh",
              .environment = {"HOME=" + home.path(), "PATH=" + folder + ":" + std::getenv("PATH")}});
}

TEST(Help, IsPrintedByEveryNameOfItWithStatus0) {
  const Result help = run({.arguments = {"--help"}});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.errors, "");
  EXPECT_THAT(help.output, StartsWith("shotlight: "));
  const std::vector<std::vector<std::string>> others = {
      {"-h"}, {"help"}, {"find", "--help"}, {"find", "-h"}, {"find", "a query", "--limit", "1", "--help"}};
  for (const auto& arguments : others) {
    const Result result = run({.arguments = arguments});
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_EQ(result.output, help.output);
    EXPECT_EQ(result.errors, "");
  }
}

TEST(Help, ExplainsEveryOption) {
  const auto help = lines(run({.arguments = {"--help"}}).output);
  for (const char* option :
       {"--in FOLDER", "--show KEY,...", "--limit N", "--plugin FILE", "--      ", "--help   "}) {
    EXPECT_THAT(help, Contains(StartsWith("  " + std::string(option)))) << option;
  }
}

TEST(Help, FitsATerminalOf80Columns) {
  for (const std::string& line : lines(run({.arguments = {"--help"}}).output)) {
    EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST(Help, NamesEveryColumnThatCanBeShown) {
  const ScratchFolder folder;
  const std::string help = run({.arguments = {"--help"}}).output;
  const std::string error = find({"kMDItemFSSize == 1", "--in", folder.path(), "--show", "none"}).errors;
  for (const char* key : {"kMDItemDisplayName", "kMDItemFSName", "kMDItemFSSize", "kMDItemPath"}) {
    EXPECT_THAT(help, HasSubstr(key));
    EXPECT_THAT(error, HasSubstr(key));
  }
}

TEST(Help, HasExamplesThatRunAsTheyStandAndFindWhatTheySay) {
  const ScratchFolder home;
  home.file("Documents/NOTES.TXT", std::string(1000001, 'x'));
  home.file("Downloads/Café menu.pdf", std::string(50, 'x'));
  const auto all = examples();
  ASSERT_EQ(all.size(), 4u);
  const char* found[] = {"NOTES.TXT\t1000001\t", "NOTES.TXT\t1000001\t", "/Downloads/Caf", " menu.pdf\t50\t"};
  for (size_t i = 0; i < all.size(); ++i) {
    SCOPED_TRACE(all[i]);
    const Result result = runInShell(all[i], home);
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_THAT(result.output, HasSubstr(found[i]));
    EXPECT_THAT(result.errors, MatchesRegex("1 result in [0-9.]+ s\n"));
  }
}

TEST(Help, IsNamedByErrorsAboutTheCommandLine) {
  EXPECT_THAT(run({}).errors, HasSubstr("see shotlight --help"));
}

}  // namespace
