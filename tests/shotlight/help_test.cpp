// The help, and that what it promises is so.
#include <cstdlib>
#include <filesystem>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char* const kCommands[] = {"find", "attrs", "schema", "keys", "program", "store", "window"};

std::string helpOf(const std::string& command) {
  return run({.arguments = {command, "--help"}}).output;
}

std::vector<std::string> examplesIn(const std::string& help) {
  std::vector<std::string> result;
  for (const std::string& line : lines(help)) {
    if (line.starts_with("  shotlight ")) result.push_back(line.substr(2));
  }
  return result;
}

bool hasLine(const Texts& help, const std::string& start) {
  return std::any_of(help.begin(), help.end(),
                     [&](const std::string& line) { return line.starts_with(start); });
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
  EXPECT_TRUE(startsWith(help.output, "shotlight: "));
  for (const char* name : {"-h", "help"}) EXPECT_EQ(run({.arguments = {name}}).output, help.output);
}

TEST(Help, OfACommandIsPrintedByEveryNameOfItWithStatus0) {
  for (const std::string command : kCommands) {
    const std::string help = helpOf(command);
    EXPECT_TRUE(startsWith(help, "shotlight " + command + ": "));
    const std::vector<std::vector<std::string>> others = {
        {command, "-h"}, {"help", command}, {command, "an operand", "--nonsense", "1", "--help"}};
    for (const auto& arguments : others) {
      const Result result = run({.arguments = arguments});
      EXPECT_EQ(result.status, 0) << result;
      EXPECT_EQ(result.output, help);
      EXPECT_EQ(result.errors, "");
    }
  }
}

TEST(Help, OfAnUnknownCommandIsAnError) {
  expectError(run({.arguments = {"help", "search"}}), "unknown command 'search'; see shotlight --help");
}

TEST(Help, NamesEveryCommand) {
  const auto help = lines(run({.arguments = {"--help"}}).output);
  for (const std::string command : kCommands) EXPECT_TRUE(hasLine(help, "  " + command + " ")) << command;
  EXPECT_TRUE(hasLine(help, "       shotlight --version"));
}

TEST(Help, ExplainsEveryOption) {
  const auto help = lines(helpOf("find"));
  for (const char* option : {"--in FOLDER",    "--scope NAME,...",  "--within QUERY", "--exclude GLOB",
                             "--depth N",      "--one-file-system", "--no-hidden",    "--show KEY,...",
                             "--sort KEY,...", "--limit N",         "--json",         "--jsonl",
                             "--count",        "--values KEY",      "--live",         "--for SECONDS",
                             "--explain",      "--no-store",        "--plugin FILE",  "--      ",
                             "--help   "}) {
    EXPECT_TRUE(hasLine(help, "  " + std::string(option))) << option;
  }
  for (const char* option : {"--clear", "--check", "--help   "}) {
    EXPECT_TRUE(hasLine(lines(helpOf("store")), "  " + std::string(option))) << option;
  }
  for (const char* option :
       {"--keys KEY,...", "--json", "--no-store", "--plugin FILE", "--      ", "--help   "}) {
    EXPECT_TRUE(hasLine(lines(helpOf("attrs")), "  " + std::string(option))) << option;
  }
}

TEST(Help, FitsATerminalOf80Columns) {
  std::string all = run({.arguments = {"--help"}}).output;
  for (const std::string command : kCommands) all += helpOf(command);
  for (const std::string& line : lines(all)) EXPECT_LE(line.size(), 80u) << line;
}

TEST(Help, HasExamplesThatRunAsTheyStandAndFindWhatTheySay) {
  const ScratchFolder home;
  home.file("Documents/NOTES.TXT", std::string(1000001, 'x'));
  home.file("Downloads/Café menu.pdf", std::string(50, 'x'));
  const auto general = examplesIn(run({.arguments = {"--help"}}).output);
  const std::pair<std::string, std::string> expected[] = {
      {"shotlight find 'kMDItemFSName", "NOTES.TXT\t1000001\t"},
      {"shotlight attrs", "kMDItemFSSize "},
      {"shotlight schema", "kMDItemTitle\tString\t"}};
  ASSERT_EQ(general.size(), std::size(expected));
  for (size_t i = 0; i < general.size(); ++i) {
    EXPECT_TRUE(startsWith(general[i], expected[i].first));
    const Result result = runInShell(general[i], home);
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, expected[i].second, result.output);
  }
  const auto all = examplesIn(helpOf("find"));
  const char* found[] = {
      "NOTES.TXT\t1000001\t", "NOTES.TXT\t1000001\t", "/Downloads/Caf",       " menu.pdf\t50\t",
      " menu.pdf\t50\t",      "NOTES.TXT\t1000001\t", "NOTES.TXT\t1000001\t", " 1000001 "};
  ASSERT_EQ(all.size(), std::size(found));
  for (size_t i = 0; i < all.size(); ++i) {
    SCOPED_TRACE(all[i]);
    const Result result = runInShell(all[i], home);
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_EQ(lines(result.output).size(), 1u);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, found[i], result.output);
  }
}

TEST(Help, IsNamedByErrorsAboutTheCommandLine) {
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "see shotlight --help", run({}).errors);
}

}  // namespace
