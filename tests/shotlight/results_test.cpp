// What is printed about results: lines for programs, a table for people, counts on standard error.
#include <algorithm>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEveryText[] = "kMDItemFSName == \"*.txt\"";

std::vector<std::string> names(const ScratchFolder& folder) {
  return lines(find({kEveryText, "--in", folder.path(), "--show", "kMDItemFSName"}).output);
}

Result onATerminal(const ScratchFolder& folder, const std::string& keys) {
  return run(
      {.arguments = {"find", kEveryText, "--in", folder.path(), "--show", keys}, .output = Output::terminal});
}

std::string rest(const std::string& line) {
  return line.substr(line.find(' '));
}

TEST(Results, AreOneLineEachWithTabsBetweenTheColumnsWhenOutputIsNoTerminal) {
  const ScratchFolder folder;
  folder.file("a.txt", "12345");
  folder.file("deep/b.txt", "1");
  EXPECT_EQ(sorted(lines(find({kEveryText, "--in", folder.path()}).output)),
            sorted({"a.txt\t5\t" + folder.at("a.txt"), "b.txt\t1\t" + folder.at("deep/b.txt")}));
}

TEST(Results, AreAsManyAsThereAreFiles) {
  for (const int files : {0, 1, 2, 1500}) {
    const ScratchFolder folder;
    std::vector<std::string> expected;
    for (int i = 0; i < files; ++i) {
      const std::string name = std::to_string(i) + ".txt";
      folder.file(name);
      expected.push_back(name + "\t0\t" + folder.at(name));
    }
    const Result result = find({kEveryText, "--in", folder.path()});
    EXPECT_EQ(sorted(lines(result.output)), sorted(expected)) << files;
    EXPECT_EQ(result.status, files > 0 ? 0 : 1) << result;
  }
}

TEST(Results, KeepNamesOfOtherScriptsAsTheyAre) {
  const ScratchFolder folder;
  folder.file("東京 旅行.txt");
  folder.file("Ελλάδα.txt");
  folder.file("🌊.txt");
  EXPECT_EQ(sorted(names(folder)), sorted({"東京 旅行.txt", "Ελλάδα.txt", "🌊.txt"}));
}

TEST(Results, AreATableWithTitlesOnATerminal) {
  const ScratchFolder folder;
  folder.file("a.txt", std::string(12345, 'x'));
  folder.file("longer name.txt", "1");
  const Result result = onATerminal(folder, "kMDItemFSName,kMDItemFSSize,kMDItemPath");
  EXPECT_EQ(lines(result.output), (Texts{"File              Size  Path",  //
                                         "a.txt            12345  " + folder.at("a.txt"),
                                         "longer name.txt      1  " + folder.at("longer name.txt")}))
      << result;
}

TEST(Results, StandUnderTheirTitlesWhenCharactersAreWideOrCombining) {
  const ScratchFolder folder;
  folder.file("plain.txt", std::string(1, 'x'));
  folder.file("\u6771\u4EAC.txt", std::string(22, 'x'));
  folder.file("e\u0301.txt", std::string(333, 'x'));
  folder.file("\U0001F30A.txt", std::string(4444, 'x'));
  EXPECT_EQ(sorted(lines(onATerminal(folder, "kMDItemFSName,kMDItemFSSize").output)),
            sorted({"File       Size",             //
                    "plain.txt     1",             //
                    "\u6771\u4EAC.txt     22",     // eight columns wide
                    "e\u0301.txt       333",       // five
                    "\U0001F30A.txt     4444"}));  // six
}

TEST(Results, StandUnderTheirTitlesWhenANameIsPrintedEscaped) {
  const ScratchFolder folder;
  folder.file("a\x1B.txt", "1");
  folder.file("b.txt", "1");
  EXPECT_EQ(sorted(lines(onATerminal(folder, "kMDItemFSName,kMDItemFSSize").output)),
            sorted({"File          Size", "$'a\\033.txt'     1", "b.txt            1"}));
}

TEST(Results, HaveNoSpacesAtTheEndOfALineOfTheTable) {
  const ScratchFolder folder;
  folder.file("a.txt");
  folder.file("a longer name.txt");
  EXPECT_EQ(sorted(lines(onATerminal(folder, "kMDItemFSName").output)),
            sorted({"File", "a.txt", "a longer name.txt"}));
}

TEST(Results, AreCountedAndTimedOnStandardError) {
  const ScratchFolder folder;
  folder.file("a.txt");
  EXPECT_TRUE(
      matches(find({kEveryText, "--in", folder.path()}).errors, "1 result in [0-9]+\\.[0-9][0-9][0-9] s\n"));
  folder.file("b.txt");
  EXPECT_TRUE(
      matches(find({kEveryText, "--in", folder.path()}).errors, "2 results in [0-9]+\\.[0-9][0-9][0-9] s\n"));
}

TEST(Results, AreCountedTheSameOnATerminal) {
  const ScratchFolder folder;
  folder.file("a.txt");
  EXPECT_EQ(rest(onATerminal(folder, "kMDItemPath").errors).substr(0, 11), " result in ");
}

TEST(Results, GiveStatus1AndNoOutputWhenThereAreNone) {
  const ScratchFolder folder;
  for (const Output output : {Output::pipe, Output::terminal}) {
    const Result result = run({.arguments = {"find", kEveryText, "--in", folder.path()}, .output = output});
    EXPECT_EQ(result.status, 1) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(matches(result.errors, "0 results in [0-9.]+ s\n"));
  }
}

TEST(Results, GiveStatus0WhenThereIsOne) {
  const ScratchFolder folder;
  folder.file("a.txt");
  EXPECT_EQ(find({kEveryText, "--in", folder.path()}).status, 0);
}

TEST(Results, ComeByThousandsWithoutLoss) {
  const ScratchFolder folder;
  std::vector<std::string> expected;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "file number " + std::to_string(i) + ".txt";
    folder.file(name);
    expected.push_back(name);
  }
  auto found = names(folder);
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected);
}

TEST(Results, OfTheELFLibraryAreThoseOfTheDylib) {
  const ScratchFolder folder;
  folder.file("a.txt", "12");
  folder.file("東京.txt", "1");
  folder.file("deep/tab\t.txt", "123");
  for (const Output output : {Output::pipe, Output::terminal}) {
    const auto with = [&](const std::vector<std::string>& plugin) {
      Launch what{.arguments = {"find", kEveryText, "--in", folder.path()}, .output = output};
      what.arguments.insert(what.arguments.end(), plugin.begin(), plugin.end());
      return run(what);
    };
    const Result built = with({});
    const Result dylib = with({"--plugin", files.dylib});
    const Result elf = with({"--plugin", files.elf});
    EXPECT_EQ(lines(built.output).size(), output == Output::terminal ? 4u : 3u);
    EXPECT_EQ(dylib.output, built.output) << dylib;
    EXPECT_EQ(elf.output, built.output) << elf;
    EXPECT_EQ(elf.status, 0);
  }
}

}  // namespace
