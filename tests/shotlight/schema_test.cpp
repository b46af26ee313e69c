// The attributes' descriptions and keys, and the search window.
#include <set>

#include "tests/shotlight/run.h"

namespace {

Result shotlight(std::vector<std::string> arguments) {
  return run({.arguments = std::move(arguments)});
}

TEST(Keys, AreThe169OfTheItemClassInItsOrder) {
  const auto keys = lines(shotlight({"keys"}).output);
  ASSERT_EQ(keys.size(), 169u);
  EXPECT_EQ(keys.front(), "kMDItemAttributeChangeDate");
  EXPECT_EQ(keys[1], "kMDItemContentType");
  EXPECT_EQ(keys.back(), "kMDItemDateAdded");
  EXPECT_EQ(std::count(keys.begin(), keys.end(), "kMDItemGPSDifferental"), 1);
  EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()).size(), 169u);
}

TEST(Keys, TakeNoArguments) {
  expectError(shotlight({"keys", "kMDItemTitle"}),
              "'kMDItemTitle' is one argument too many; keys takes none");
}

TEST(Schema, TellsTypeNameAndDescription) {
  const auto rows =
      lines(shotlight({"schema", "kMDItemFSSize", "kMDItemAuthors", "kMDItemFSInvisible"}).output);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_TRUE(matches(rows[0], "kMDItemFSSize\tNumber\t\t[^\t]+\t[^\t]+"));
  EXPECT_TRUE(matches(rows[1], "kMDItemAuthors\t[A-Za-z]+\tseveral\t[^\t]+\t[^\t]+"));
  EXPECT_TRUE(matches(rows[2], "kMDItemFSInvisible\tBoolean\t\t[^\t]+\t[^\t]+"));
}

TEST(Schema, OfNoKeysIsOfAllThatTheSystemKnows) {
  const Result result = shotlight({"schema"});
  EXPECT_EQ(result.status, 0) << result;
  const auto rows = lines(result.output);
  EXPECT_EQ(rows.size(), 169u);
  for (const std::string& row : rows) EXPECT_TRUE(startsWith(row, "kMDItem"));
}

TEST(Schema, OfAnUnknownKeyIsAnErrorThatNamesIt) {
  expectError(shotlight({"schema", "kMDItemTitle", "nonsense"}),
              "schema 'nonsense': no such key; shotlight keys lists them");
  expectError(shotlight({"schema", "title"}), "schema 'title': no such key; is kMDItemTitle meant?");
}

TEST(Window, ShowsTheText) {
  for (const std::string text : {"harbour", "東京 \"x\"", "*"}) {
    const Result result = shotlight({"window", text});
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_EQ(result.output, "the search window would show: " + text + "\n");
  }
  EXPECT_EQ(shotlight({"window", "a\tb"}).output, "the search window would show: a\\tb\n");
}

TEST(Window, NeedsOneText) {
  expectError(shotlight({"window"}), "window needs a text, such as harbour");
  expectError(shotlight({"window", "a", "b"}),
              "'b' is one argument too many; put the whole text in one pair of quotes");
  for (const char* const bad : {"\xFF", "\xA9"}) {
    expectError(shotlight({"window", bad}), "the text is not valid UTF-8; write it in UTF-8");
  }
}

TEST(Commands, AreTheSameWithTheELFLibrary) {
  for (std::vector<std::string> command :
       std::vector<std::vector<std::string>>{{"keys"}, {"schema"}, {"window", "x"}}) {
    const Result dylib = shotlight(command);
    command.insert(command.end(), {"--plugin", files.elf});
    EXPECT_NE(dylib.output, "");
    EXPECT_EQ(shotlight(command).output, dylib.output);
  }
}

TEST(Commands, NameAPluginThatIsNotThere) {
  for (const std::string command : {"attrs", "schema", "window"}) {
    expectError(shotlight({command, "x", "--plugin", "/none"}),
                "the plug-in '/none': No such file or directory; name a plug-in that exists");
  }
}

}  // namespace
