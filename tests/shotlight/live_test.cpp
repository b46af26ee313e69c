// find --live: results as they come and go.
#include <signal.h>

#include <algorithm>
#include <set>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEveryText[] = "kMDItemFSName == \"*.txt\"";

Launch liveIn(const ScratchFolder& folder, const std::vector<std::string>& more = {}) {
  Launch what{.arguments = {"find", kEveryText, "--in", folder.path(), "--live"}};
  what.arguments.insert(what.arguments.end(), more.begin(), more.end());
  return what;
}

// What is left when all that the lines tell has happened. A path may come only when it isn't there, and
// change or go only when it is.
std::set<std::string> replay(const std::string& output) {
  std::set<std::string> paths;
  for (const std::string& line : lines(output)) {
    const std::string path = line.substr(2);
    switch (line[0]) {
      case '+':
        EXPECT_TRUE(paths.insert(path).second) << line;
        break;
      case '~':
        EXPECT_EQ(paths.count(path), 1u) << line;
        break;
      case '-':
        EXPECT_EQ(paths.erase(path), 1u) << line;
        break;
      default:
        ADD_FAILURE() << line;
    }
  }
  return paths;
}

std::set<std::string> foundIn(const ScratchFolder& folder) {
  const auto paths = lines(find({kEveryText, "--in", folder.path(), "--show", "kMDItemPath"}).output);
  return {paths.begin(), paths.end()};
}

// What only one of two sets has, for messages: "-" what should be there, "+" what should not.
std::vector<std::string> differences(const std::set<std::string>& expected,
                                     const std::set<std::string>& actual) {
  std::vector<std::string> result;
  for (const std::string& path : expected) {
    if (!actual.contains(path)) result.push_back("- " + path);
  }
  for (const std::string& path : actual) {
    if (!expected.contains(path)) result.push_back("+ " + path);
  }
  return result;
}

// The shell does it, in a process of its own.
void inShell(const ScratchFolder& folder, const std::string& script) {
  const Result result = run({.arguments = {"-ec", script}, .folder = folder.path(), .program = "/bin/sh"});
  ASSERT_EQ(result.status, 0) << result;
}

TEST(Live, PrintsWhatIsThereAndThenWhatComesChangesAndGoes) {
  const ScratchFolder folder;
  const std::string first = folder.file("first.txt");
  folder.file("other.bin");
  Running program(liveIn(folder));
  ASSERT_TRUE(program.waitForLine("+ " + first));
  inShell(folder, "echo 1 > second.txt; echo 2 > no.bin");
  ASSERT_TRUE(program.waitForLine("+ " + folder.at("second.txt")));
  inShell(folder, "echo more >> first.txt");
  ASSERT_TRUE(program.waitForLine("~ " + first));
  inShell(folder, "rm first.txt");
  ASSERT_TRUE(program.waitForLine("- " + first));
  program.send(SIGINT);
  const Result result = program.finish();
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_TRUE(matches(result.errors, "1 result after [0-9.]+ s\n"));
  EXPECT_EQ(replay(result.output), std::set<std::string>{folder.at("second.txt")});
}

TEST(Live, EndsInTheSetThatFindFindsWhileAnotherProcessMakesRenamesAndDeletesAThousandFiles) {
  for (const std::string& plugin : {files.dylib, files.elf}) {
    SCOPED_TRACE(plugin);
    const ScratchFolder folder;
    const std::string start = folder.file("start.txt");
    Running program(liveIn(folder, {"--plugin", plugin}));
    ASSERT_TRUE(program.waitForLine("+ " + start));
    inShell(folder,
            "mkdir deep; i=0; while [ $i -lt 1000 ]; do echo $i > $i.txt; i=$((i+1)); done;"
            "i=0; while [ $i -lt 400 ]; do mv $i.txt deep/renamed-$i.txt; i=$((i+1)); done;"
            "while [ $i -lt 600 ]; do mv $i.txt $i.bin; i=$((i+1)); done;"
            "while [ $i -lt 800 ]; do rm $i.txt; i=$((i+1)); done;"
            "mv deep moved");
    const auto expected = foundIn(folder);
    EXPECT_EQ(expected.size(), 601u);
    EXPECT_TRUE(program.waitUntil([&](const std::string& output) { return replay(output) == expected; }));
    program.send(SIGTERM);
    const Result result = program.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(Texts(), differences(expected, replay(result.output)));
  }
}

TEST(Live, EndsAfterTheTimeThatIsGiven) {
  const ScratchFolder folder;
  const std::string path = folder.file("a.txt");
  const Result result = run(liveIn(folder, {"--for", "0.05"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "+ " + path + "\n");
  EXPECT_TRUE(matches(result.errors, "1 result after [0-9]+\\.[0-9]+ s\n"));
}

TEST(Live, HasStatus1WhenNothingIsLeft) {
  const ScratchFolder folder;
  const Result result = run(liveIn(folder, {"--for", "0"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
}

TEST(Live, PrintsOneLineForEachPathWhateverControlCharactersItHas) {
  const ScratchFolder folder;
  folder.file("a\tb\n.txt");
  EXPECT_EQ(run(liveIn(folder, {"--for", "0"})).output, "+ $'" + folder.path() + "/a\\tb\\n.txt'\n");
}

TEST(Live, EndsWithAnErrorWhenOutputTakesNoMore) {
  const ScratchFolder folder;
  folder.file("a.txt");
  Launch what = liveIn(folder);
  what.output = Output::full;
  expectError(
      run(what),
      "standard output can't be written: No space left on device; send it to a file or a program that "
      "can take it");
}

TEST(Live, EndsWithAnErrorWhenOutputTakesNoMoreDuringAnUpdate) {
  const ScratchFolder folder;
  Launch what = liveIn(folder);
  what.output = Output::closed;
  Running program(what);
  inShell(folder, "i=0; while [ $i -lt 100 ]; do echo $i > $i.txt; i=$((i+1)); done");
  const Result result = program.finish();
  EXPECT_EQ(result.status, 2) << result;
}

}  // namespace
