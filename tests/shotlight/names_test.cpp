// Names of files are bytes: what is printed leads back to the file.
#include <unistd.h>

#include <algorithm>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEverything[] = "kMDItemFSName == \"*\"";

const std::string kOddNames[] = {
    "\xFF",
    "%FF",
    "%25FF",
    "caf\xE9",
    "caf\u00E9",
    "caf%E9",
    "\xE6\x9D",
    "\xED\xA0\x80",
    "\x9B",
    "\u009B",
    "\u202Efdp",
    "tab\there",
    "new\nline",
    "\r",
    "\x1B[2J",
    "back\\slash",
    "back\\\\slash",
    "\\t",
    "\t",
    "it's",
    "$'x'",
    "$'\\t'",
    "'",
    "\"",
    " both ends ",
    "$HOME `id`",
    "\x7F",
    "\x01\x02"
    "7",
    "*?[a]",
    "\u6771\u4EAC",
    "\U0001F30A",
};

std::vector<std::string> splitAt(const std::string& text, char end) {
  std::vector<std::string> parts;
  for (size_t start = 0; start < text.size();) {
    const size_t next = std::min(text.find(end, start), text.size());
    parts.push_back(text.substr(start, next - start));
    start = next + 1;
  }
  return parts;
}

// What a shell takes the words for.
Texts readByShell(const Texts& words) {
  std::string script = "printf '%s\\0'";
  for (const std::string& word : words) {
    if (word.starts_with("$'")) {
      script += " " + word;
      continue;
    }
    std::string quoted;
    for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    script += " '" + quoted + "'";
  }
  return splitAt(run({.arguments = {"-c", script}, .program = "/bin/bash"}).output, '\0');
}

class Names : public testing::Test {
 protected:
  Names() {
    for (const std::string& name : kOddNames) paths_.push_back(scratch_.file(name));
  }

  Result findEverything(std::vector<std::string> more, Output output = Output::pipe) const {
    Launch what{.arguments = {"find", kEverything}, .folder = scratch_.path(), .output = output};
    what.arguments.insert(what.arguments.end(), more.begin(), more.end());
    return run(what);
  }

  const ScratchFolder scratch_;
  Texts paths_;
};

TEST_F(Names, AreWordsOfAShellOnATerminal) {
  Texts rows = lines(findEverything({"--show", "kMDItemPath"}, Output::terminal).output);
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows.front(), "Path");
  rows.erase(rows.begin());
  EXPECT_EQ(sorted(readByShell(rows)), sorted(paths_));
}

TEST_F(Names, AreWordsOfAShellInLines) {
  EXPECT_EQ(sorted(readByShell(lines(findEverything({"--show", "kMDItemPath"}).output))), sorted(paths_));
  EXPECT_EQ(sorted(readByShell(lines(findEverything({"--show", "kMDItemFSName"}).output))),
            sorted(Texts(std::begin(kOddNames), std::end(kOddNames))));
}

TEST_F(Names, AreTheVeryBytesInLinesWithoutControlCharacters) {
  const Texts found = lines(findEverything({"--show", "kMDItemFSName"}).output);
  for (const char* const name :
       {"\xFF", "%FF", "caf\xE9", "\xED\xA0\x80", "back\\slash", " both ends ", "it's"})
    EXPECT_EQ(std::count(found.begin(), found.end(), name), name[0] == '\xED' ? 0 : 1) << name;
}

TEST_F(Names, AreTheVeryBytesBeforeAZero) {
  for (const char* const option : {"-0", "--print0"}) {
    for (const Output output : {Output::pipe, Output::terminal}) {
      const Result result = findEverything({option}, output);
      EXPECT_EQ(result.status, 0) << result;
      EXPECT_EQ(sorted(splitAt(result.output, '\0')), sorted(paths_)) << result;
    }
  }
}

TEST_F(Names, AreTheVeryBytesAmongOtherColumnsBeforeAZero) {
  const auto parts =
      splitAt(findEverything({"-0", "--show", "kMDItemFSSize,kMDItemFSName,kMDItemAuthors"}).output, '\0');
  ASSERT_EQ(parts.size(), 3 * paths_.size());
  Texts names;
  for (size_t i = 0; i < parts.size(); i += 3) {
    EXPECT_EQ(parts[i], "0");
    names.push_back(parts[i + 1]);
    EXPECT_EQ(parts[i + 2], "");
  }
  EXPECT_EQ(sorted(names), sorted(Texts(std::begin(kOddNames), std::end(kOddNames))));
}

TEST_F(Names, GoToOtherProgramsByZeros) {
  const Result result =
      run({.arguments = {"-c", "\"$0\" find '" + std::string(kEverything) + "' -0 | xargs -0 rm --",
                         files.program},
           .folder = scratch_.path(),
           .program = "/bin/bash"});
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(findEverything({"--count"}).output, "0\n");
}

TEST_F(Names, AreToldApartAmongValues) {
  const Result result = findEverything({"--values", "kMDItemPath"});
  Texts words;
  for (const std::string& row : lines(result.output)) {
    EXPECT_TRUE(row.starts_with("1\t")) << row;
    words.push_back(row.substr(2));
  }
  EXPECT_EQ(sorted(readByShell(words)), sorted(paths_));
}

TEST_F(Names, AreWordsOfAShellWhileTheyChange) {
  Texts words;
  for (const std::string& row : lines(findEverything({"--live", "--for", "0"}).output)) {
    EXPECT_TRUE(row.starts_with("+ ")) << row;
    words.push_back(row.substr(2));
  }
  EXPECT_EQ(sorted(readByShell(words)), sorted(paths_));
}

TEST_F(Names, GiveTheAttributesOfTheirOwnFile) {
  for (size_t i = 0; i < paths_.size(); ++i) scratch_.file(kOddNames[i], std::string(i, 'x'));
  for (size_t i = 0; i < paths_.size(); ++i) {
    const Result result = run(
        {.arguments = {"attrs", "--keys", "kMDItemFSSize", "--", kOddNames[i]}, .folder = scratch_.path()});
    EXPECT_EQ(result.output, "kMDItemFSSize = " + std::to_string(i) + "\n") << kOddNames[i] << result;
  }
}

TEST(NamesOfFolders, NeedNotBeUTF8) {
  const ScratchFolder scratch;
  for (const std::string folder : {"\xFF", "%FF", "caf\xE9", "caf\u00E9"}) {
    const std::string file = scratch.file(folder + "/" + folder + "/a.txt");
    for (const Launch& what : {Launch{.arguments = {"--in", folder}, .folder = scratch.path()},
                               Launch{.arguments = {"--in", scratch.at(folder)}, .folder = {}},
                               Launch{.arguments = {"--in", "."}, .folder = scratch.at(folder)},
                               Launch{.arguments = {}, .folder = scratch.at(folder)}}) {
      Launch command = what;
      command.arguments.insert(command.arguments.begin(), {"find", "kMDItemFSName == \"*.txt\"", "-0"});
      const Result result = run(command);
      EXPECT_EQ(result.output, file + '\0') << result;
    }
    const Result attributes = run({.arguments = {"attrs", file, "--keys", "kMDItemFSName"}});
    EXPECT_EQ(attributes.output, "kMDItemFSName = \"a.txt\"\n") << attributes;
  }
}

TEST(NamesInErrors, AreWordsOfAShell) {
  expectError(find({kEverything, "--in", "\x1B[2J"}),
              "--in $'\\033[2J': No such file or directory; name a folder that exists");
  expectError(run({.arguments = {"attrs", "it's"}}),
              "$'it\\'s': No such file or directory; name a file that exists");
}

TEST(LongPaths, OfTheWorkingFolderAreSearched) {
  const ScratchFolder scratch;
  const std::string folder = scratch.longFolder({"a.txt", "\xFF.txt"});
  const std::string all = folder + "/a.txt" + '\0' + folder + "/\xFF.txt" + '\0';
  const std::string query = "kMDItemFSName == \"*.txt\"";
  for (const std::vector<std::string>& more : std::initializer_list<std::vector<std::string>>{
           {}, {"--in", "."}, {"--in", folder}, {"--in", "./."}}) {
    Launch what{.arguments = {"find", query, "-0"}, .folder = folder};
    what.arguments.insert(what.arguments.end(), more.begin(), more.end());
    const Result result = run(what);
    EXPECT_EQ(result.output, all) << result;
    EXPECT_EQ(result.status, 0);
  }
  const Result above = run({.arguments = {"find", query, "-0", "--in", ".."}, .folder = folder});
  EXPECT_EQ(above.output, all) << above;
  const Result attributes = run({.arguments = {"attrs", "a.txt", "--keys", "kMDItemPath"}, .folder = folder});
  EXPECT_EQ(attributes.output, "kMDItemPath = \"" + folder + "/a.txt\"\n") << attributes;
  const Result live = run({.arguments = {"find", query, "--live", "--for", "0"}, .folder = folder});
  EXPECT_EQ(lines(live.output).size(), 2u) << live;
}

TEST(LongPaths, ThatLeadNowhereAreErrors) {
  const ScratchFolder scratch;
  const std::string folder = scratch.longFolder({"a.txt"});
  expectError(run({.arguments = {"find", kEverything, "--in", "none"}, .folder = folder}),
              "--in 'none': No such file or directory; name a folder that exists");
  expectError(run({.arguments = {"find", kEverything, "--in", "a.txt"}, .folder = folder}),
              "--in 'a.txt': not a folder; name the folder it is in");
  expectError(run({.arguments = {"attrs", folder + "/none"}}),
              "'" + folder + "/none': No such file or directory; name a file that exists");
}

}  // namespace
