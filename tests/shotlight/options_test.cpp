// Options and their values; arguments that are too many, too few or unknown.
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEveryText[] = "kMDItemFSName == \"*.txt\"";

class Options : public testing::Test {
 protected:
  Options() {
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) folder_.file(name, "12");
  }

  Result findWith(const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {kEveryText, "--in", folder_.path()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return find(arguments);
  }

  size_t countWith(const std::vector<std::string>& options) { return lines(findWith(options).output).size(); }

  ScratchFolder folder_;
};

TEST_F(Options, LimitPrintsTheFirstResultsAndSaysOfHowMany) {
  const auto all = lines(findWith({}).output);
  ASSERT_EQ(all.size(), 3u);
  const Result one = findWith({"--limit", "1"});
  EXPECT_EQ(one.status, 0);
  EXPECT_EQ(lines(one.output), (Texts{all[0]}));
  EXPECT_TRUE(matches(one.errors, "1 result, and there are more, in [0-9.]+ s\n"));
  EXPECT_TRUE(startsWith(findWith({"--limit", "1", "--sort", "kMDItemFSName"}).errors,
                         "the first 1 of 3 results in "));
  EXPECT_EQ(lines(findWith({"--limit", "2"}).output), (Texts{all[0], all[1]}));
}

TEST_F(Options, LimitOfAsManyAsThereAreOrMorePrintsAll) {
  for (const char* limit : {"3", "4", "100000", "2147483647"}) {
    const Result result = findWith({"--limit", limit});
    EXPECT_EQ(lines(result.output).size(), 3u) << limit;
    EXPECT_TRUE(startsWith(result.errors, "3 results in ")) << limit;
  }
}

TEST_F(Options, LimitMustBeAWholeNumberFrom1) {
  for (const std::string limit : {"0", "-1", "abc", "", "1x", "0x1", "1.5", " 1", "+1", "2147483648",
                                  "99999999999999999999", "-2147483649", "١"}) {
    SCOPED_TRACE(limit);
    expectError(findWith({"--limit", limit}),
                "--limit '" + limit + "': a whole number from 1 to 2147483647 is needed");
  }
}

TEST_F(Options, ShowChoosesTheColumns) {
  folder_.file("one.bin", "12345");
  const auto shown = [&](const std::string& keys) {
    return find({"kMDItemFSSize == 5", "--in", folder_.path(), "--show", keys}).output;
  };
  EXPECT_EQ(shown("kMDItemFSName"), "one.bin\n");
  EXPECT_EQ(shown("kMDItemDisplayName"), "one.bin\n");
  EXPECT_EQ(shown("kMDItemFSSize"), "5\n");
  EXPECT_EQ(shown("kMDItemPath"), folder_.at("one.bin") + "\n");
  EXPECT_EQ(shown("kMDItemFSSize,kMDItemPath,kMDItemFSName"), "5\t" + folder_.at("one.bin") + "\tone.bin\n");
  EXPECT_EQ(shown("kMDItemFSSize,kMDItemFSSize"), "5\t5\n");
}

TEST_F(Options, ShowGivenTwiceShowsTheColumnsOfBoth) {
  folder_.file("one.bin", "12345");
  EXPECT_EQ(find({"kMDItemFSSize == 5", "--in", folder_.path(), "--show", "kMDItemFSSize", "--show",
                  "kMDItemFSName"})
                .output,
            "5\tone.bin\n");
}

TEST_F(Options, ShowOfAnUnknownKeySaysWhichOneIsMeantOrWhereTheyAreListed) {
  for (const std::string key : {"nonsense", " kMDItemPath", "kMDItem", "kMDItemPathKind"}) {
    SCOPED_TRACE(key);
    const std::string expected = "--show '" + key + "': no such key; shotlight keys lists them";
    expectError(findWith({"--show", key}), expected);
    expectError(findWith({"--show", "kMDItemPath," + key}), expected);
  }
  for (const std::string key : {"kmditempath", "Path", "path"}) {
    SCOPED_TRACE(key);
    expectError(findWith({"--show", key}), "--show '" + key + "': no such key; is kMDItemPath meant?");
  }
}

TEST_F(Options, NameOnlyKeysThatThereAre) {
  const std::string unknown = " 'nonsense': no such key; shotlight keys lists them";
  expectError(findWith({"--sort", "kMDItemPath,nonsense:desc"}), "--sort" + unknown);
  expectError(findWith({"--values", "nonsense"}), "--values" + unknown);
}

TEST_F(Options, SortRefusesEmptyKeys) {
  for (const std::string keys : {"", ",", "kMDItemPath,", ":desc", "kMDItemPath,:desc"}) {
    SCOPED_TRACE(keys);
    expectError(findWith({"--sort", keys}),
                "--sort '" + keys + "': a key is empty; write --sort KEY,KEY:desc");
  }
}

TEST_F(Options, ScopeIsOneOfSix) {
  for (const std::string scope : {"", "Home", "everywhere", "kMDQueryScopeHome", "home,"}) {
    SCOPED_TRACE(scope);
    const std::string wrong = scope == "home," ? "" : scope;
    expectError(findWith({"--scope", scope}),
                "--scope '" + wrong +
                    "': no such scope; there are home, computer, network, all, computer-indexed, "
                    "network-indexed");
  }
}

TEST_F(Options, ForIsANumberOfSecondsForLive) {
  for (const std::string seconds : {"", "abc", "-1", "1s", "nan", "inf", "1e999", " 1"}) {
    SCOPED_TRACE(seconds);
    expectError(findWith({"--live", "--for", seconds}),
                "--for '" + seconds + "': a number of seconds is needed, such as 10 or 0.5");
  }
  expectError(findWith({"--for", "1"}), "--for needs --live; add it");
}

TEST_F(Options, ThatContradictEachOtherAreNamed) {
  const std::vector<std::string> kinds[] = {{"--count"}, {"--values", "kMDItemPath"}, {"--live"}};
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = i + 1; j < 3; ++j) {
      std::vector<std::string> both = kinds[j];
      both.insert(both.end(), kinds[i].begin(), kinds[i].end());
      expectError(findWith(both), kinds[i][0] + " and " + kinds[j][0] + " don't go together; leave one out");
    }
    for (const char* row : {"--show=kMDItemPath", "--sort=kMDItemPath", "--limit=1"}) {
      std::vector<std::string> both = kinds[i];
      both.push_back(row);
      const std::string name = std::string(row).substr(0, std::string(row).find('='));
      expectError(findWith(both), kinds[i][0] + " and " + name + " don't go together; leave one out");
    }
  }
}

TEST_F(Options, ThatAreSwitchesTakeNoValue) {
  for (const std::string option : {"--count", "--live"}) {
    expectError(findWith({option + "=1"}), option + " takes no value; see shotlight find --help");
  }
}

TEST_F(Options, WithinNeedsAQuery) {
  expectError(findWith({"--within", " "}),
              "--within: the query is empty; write one, such as 'kMDItemFSName == \"*.txt\"'");
}

TEST_F(Options, ShowRefusesEmptyKeys) {
  for (const std::string keys : {"", ",", "kMDItemPath,", ",kMDItemPath", "kMDItemPath,,kMDItemFSName"}) {
    SCOPED_TRACE(keys);
    expectError(findWith({"--show", keys}), "--show '" + keys + "': a key is empty; write --show KEY,KEY");
  }
}

TEST_F(Options, TakeTheirValuesJoinedByAnEqualsSign) {
  EXPECT_EQ(countWith({"--limit=2"}), 2u);
  EXPECT_EQ(lines(findWith({"--limit=1", "--show=kMDItemFSSize"}).output), std::vector<std::string>{"2"});
  EXPECT_EQ(lines(find({kEveryText, "--in=" + folder_.path(), "--plugin=" + files.elf}).output).size(), 3u);
  folder_.file("x=y/d.txt");
  EXPECT_EQ(find({kEveryText, "--in=" + folder_.at("x=y"), "--show=kMDItemFSName"}).output, "d.txt\n");
  expectError(findWith({"--limit=abc"}), "--limit 'abc': a whole number from 1 to 2147483647 is needed");
  expectError(findWith({"--limit="}), "--limit '': a whole number from 1 to 2147483647 is needed");
}

TEST_F(Options, MayStandBeforeTheQuery) {
  EXPECT_EQ(lines(find({"--limit", "1", "--in", folder_.path(), kEveryText}).output).size(), 1u);
}

TEST_F(Options, EndAtADoubleDash) {
  EXPECT_EQ(lines(find({"--in", folder_.path(), "--", kEveryText}).output).size(), 3u);
  expectError(find({"--", kEveryText, "--limit"}),
              "'--limit' is one argument too many; put the whole query in one pair of quotes");
  EXPECT_TRUE(startsWith(find({"--in", folder_.path(), "--", "--help == 1"}).errors,
                         "shotlight: the query can't be understood: "));
  EXPECT_TRUE(startsWith(find({"--in", folder_.path(), "--", "--help"}).errors, "0 results in "));
  expectError(find({"--"}),
              "find needs a query, such as 'kMDItemFSName == \"*.txt\"', or words, such as harbour");
}

TEST_F(Options, WithoutAValueSaySo) {
  for (const std::string option : {"--in", "--scope", "--within", "--exclude", "--depth", "--show", "--sort",
                                   "--limit", "--values", "--for", "--plugin"}) {
    SCOPED_TRACE(option);
    expectError(findWith({option}), option + " needs a value; see shotlight find --help");
  }
}

TEST_F(Options, NameNoEmptyFolderOrPlugin) {
  for (const std::string option : {"--in", "--plugin", "--values"}) {
    SCOPED_TRACE(option);
    const std::string expected = option + " '': the name is empty; give one";
    expectError(findWith({option, ""}), expected);
    expectError(findWith({option + "="}), expected);
  }
}

TEST_F(Options, ThatAreUnknownAreNamed) {
  for (const std::string option : {"--nonsense", "-x", "-limit", "-", "---", "--Limit", "--lim"}) {
    SCOPED_TRACE(option);
    expectError(findWith({option}), "unknown option '" + option + "'; see shotlight find --help");
  }
  expectError(findWith({"--nonsense=3"}), "unknown option '--nonsense'; see shotlight find --help");
}

TEST_F(Options, TheQueryIsOneArgument) {
  expectError(find({"kMDItemFSSize", ">", "3"}),
              "'>' is one argument too many; put the whole query in one pair of quotes");
}

TEST_F(Options, FindNeedsAQuery) {
  expectError(find({}),
              "find needs a query, such as 'kMDItemFSName == \"*.txt\"', or words, such as harbour");
  expectError(find({"--in", folder_.path()}),
              "find needs a query, such as 'kMDItemFSName == \"*.txt\"', or words, such as harbour");
}

TEST_F(Options, ACommandIsNeeded) {
  expectError(run({}), "a command is missing; see shotlight --help");
  for (const std::string command : {"search", "Find", "", "--limit"}) {
    SCOPED_TRACE(command);
    expectError(run({.arguments = {command}}), "unknown command '" + command + "'; see shotlight --help");
  }
}

}  // namespace
