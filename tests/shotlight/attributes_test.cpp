// What attrs prints about files.
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

using nlohmann::json;

Result attrs(std::vector<std::string> arguments, const std::string& folder = "") {
  arguments.insert(arguments.begin(), "attrs");
  return run({.arguments = std::move(arguments), .folder = folder});
}

json parsed(const Result& result) {
  return json::parse(result.output, nullptr, false);
}

TEST(Attributes, AreOneLineEachSortedByKey) {
  const ScratchFolder folder;
  const Result result = attrs({folder.file("a.txt", "12345")});
  EXPECT_EQ(result.status, 0) << result;
  EXPECT_EQ(result.errors, "");
  const auto all = lines(result.output);
  for (const char* row :
       {"kMDItemFSName *= \"a.txt\"", "kMDItemFSSize *= 5", "kMDItemFSInvisible *= false"}) {
    const auto isRow = [row](const std::string& line) { return bool(matches(line, row)); };
    EXPECT_EQ(std::count_if(all.begin(), all.end(), isRow), 1) << row;
  }
  std::vector<std::string> keys;
  size_t equals = std::string::npos;
  for (const std::string& line : all) {
    if (!line.starts_with("kMDItem")) continue;
    keys.push_back(line.substr(0, line.find(' ')));
    if (equals == std::string::npos) equals = line.find('=');
    EXPECT_EQ(line.find('='), equals) << line;
  }
  EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
}

TEST(Attributes, ThatAreAskedForComeInThatOrderAndMayBeMissing) {
  const ScratchFolder folder;
  const std::string path = folder.file("a.txt", "12345");
  EXPECT_EQ(attrs({path, "--keys", "kMDItemTitle,kMDItemFSSize", "--keys=kMDItemFSName"}).output,
            "kMDItemTitle  = (none)\n"
            "kMDItemFSSize = 5\n"
            "kMDItemFSName = \"a.txt\"\n");
}

TEST(Attributes, OfSeveralValuesAreIndented) {
  const ScratchFolder folder;
  EXPECT_TRUE(matches(attrs({folder.file("a.txt"), "--keys", "kMDItemContentTypeTree"}).output,
                      "kMDItemContentTypeTree = \\(\n(  \"public\\.[^\n]*\n){5}\\)\n"));
}

TEST(Attributes, AreDatesInGMT) {
  const ScratchFolder folder;
  const std::string path = folder.file("a.txt");
  const timespec times[] = {{1299314530, 0}, {1299314530, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  for (const char* zone : {"TZ=UTC", "TZ=Asia/Tokyo"}) {
    const Result result =
        run({.arguments = {"attrs", path, "--keys", "kMDItemFSContentChangeDate"}, .environment = {zone}});
    EXPECT_EQ(result.output, "kMDItemFSContentChangeDate = 2011-03-05T08:42:10Z\n");
  }
}

TEST(Attributes, OfSeveralFilesComeUnderTheirPaths) {
  const ScratchFolder folder;
  folder.file("a.txt", "1");
  folder.file("deep/b.txt", "12");
  EXPECT_EQ(
      attrs({"a.txt", "deep/../deep/b.txt", "--keys", "kMDItemFSSize"}, folder.path()).output,
      folder.at("a.txt") + ":\nkMDItemFSSize = 1\n\n" + folder.at("deep/b.txt") + ":\nkMDItemFSSize = 2\n");
}

TEST(Attributes, AreThoseOfTheFileThatIsNamedAndOfNoOtherOfThatName) {
  const ScratchFolder folder;
  folder.file("x.txt", "1");
  folder.file("deep/x.txt", "12");
  folder.file("a/x.txt", "123");
  EXPECT_EQ(attrs({"x.txt", "--keys=kMDItemFSSize"}, folder.path()).output, "kMDItemFSSize = 1\n");
  EXPECT_EQ(attrs({"a/x.txt", "--keys=kMDItemFSSize"}, folder.path()).output, "kMDItemFSSize = 3\n");
  EXPECT_EQ(attrs({"x.txt", "--keys=kMDItemFSSize"}, folder.at("deep")).output, "kMDItemFSSize = 2\n");
}

TEST(Attributes, AreFoundWhateverTheNameHolds) {
  const ScratchFolder folder;
  for (const std::string name : {"*", "?", "a\\b", "\"quoted\"", "a\tb\nc", "東京", "-dash", "%41", "a:b",
                                 ".hidden", "Cafe\u0301", "Caf\u00E9"}) {
    SCOPED_TRACE(name);
    folder.file(name, name);
    const Result result = attrs({"--json", "--keys=kMDItemFSName,kMDItemFSSize", "--", name}, folder.path());
    ASSERT_EQ(result.status, 0) << result;
    const json expected = {{{"path", folder.at(name)},
                            {"attributes", {{"kMDItemFSName", name}, {"kMDItemFSSize", name.size()}}}}};
    EXPECT_EQ(parsed(result), expected);
  }
}

TEST(Attributes, OfFoldersAndLinksAreTheirOwn) {
  const ScratchFolder folder;
  folder.file("deep/a.txt", "12345");
  folder.link("link", "deep/a.txt");
  folder.link("dangling", "nowhere");
  for (const std::string name : {"deep", "link", "dangling"}) {
    EXPECT_EQ(attrs({name, "--keys=kMDItemFSName"}, folder.path()).output,
              "kMDItemFSName = \"" + name + "\"\n");
  }
  for (const std::string name : {".", "../deep", "../deep/", "./"}) {
    EXPECT_EQ(attrs({name, "--keys=kMDItemFSName"}, folder.at("deep")).output, "kMDItemFSName = \"deep\"\n")
        << name;
  }
}

TEST(Attributes, AreEscapedSoThatATerminalShowsThemAsTheyAre) {
  const ScratchFolder folder;
  const std::string path = folder.file("\x1B[31m\t\"x\"\\\u202E.txt");
  EXPECT_EQ(attrs({path, "--keys=kMDItemFSName"}).output,
            "kMDItemFSName = \"\\x1B[31m\\t\\\"x\\\"\\\\\\u202E.txt\"\n");
}

TEST(Attributes, OfTheOtherFilesAreShownWhenOneIsMissing) {
  const ScratchFolder folder;
  const std::string first = folder.file("a.txt", "1");
  const std::string last = folder.file("b.txt", "12");
  const Result result = attrs({first, folder.at("none"), last, "--keys=kMDItemFSSize"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, first + ":\nkMDItemFSSize = 1\n\n" + last + ":\nkMDItemFSSize = 2\n");
  EXPECT_EQ(result.errors,
            "shotlight: '" + folder.at("none") + "': No such file or directory; name a file that exists\n");
}

TEST(Attributes, CantBeHadOfEverything) {
  const ScratchFolder folder;
  expectError(attrs({"none/x"}, folder.path()),
              "'none/x': No such file or directory; name a file that exists");
  expectError(attrs({folder.file("a.txt") + "/x"}),
              "'" + folder.at("a.txt") + "/x': Not a directory; name a file that exists");
  expectError(attrs({""}), "'': No such file or directory; name a file that exists");
}

TEST(Attributes, OfAFileWhoseFolderMayBeSearchedButNotRead) {
  const ScratchFolder folder;
  const std::string path = folder.file("closed/a.txt");
  ASSERT_EQ(chmod(folder.at("closed").c_str(), 0100), 0);
  const Result result = run({.arguments = {"attrs", path, "--keys=kMDItemFSName"}, .unprivileged = true});
  EXPECT_EQ(result.output, "kMDItemFSName = \"a.txt\"\n") << result;
  ASSERT_EQ(chmod(folder.at("closed").c_str(), 0600), 0);
  expectError(run({.arguments = {"attrs", path}, .unprivileged = true}),
              "'" + path + "': Permission denied; name a file whose folder you may search");
  chmod(folder.at("closed").c_str(), 0700);
}

TEST(Attributes, OfTheRoot) {
  EXPECT_EQ(attrs({"/", "--keys=kMDItemFSName,kMDItemPath"}).output,
            "kMDItemFSName = \"/\"\nkMDItemPath   = \"/\"\n");
}

TEST(Attributes, NeedAFileAndKnownKeys) {
  expectError(attrs({}), "attrs needs a file, such as NOTES.TXT");
  expectError(attrs({"x", "--keys", "FSName"}), "--keys 'FSName': no such key; is kMDItemFSName meant?");
  expectError(attrs({"x", "--keys", ","}), "--keys ',': a key is empty; write --keys KEY,KEY");
  expectError(attrs({"x", "--nonsense"}), "unknown option '--nonsense'; see shotlight attrs --help");
}

TEST(AttributesInJSON, AreAnArrayWithAnObjectForEachFile) {
  const ScratchFolder folder;
  folder.file("a.txt", "1");
  folder.file("b.txt", "12");
  const Result result = attrs({"--json", "a.txt", "b.txt"}, folder.path());
  EXPECT_EQ(result.status, 0);
  const json all = parsed(result);
  ASSERT_EQ(all.size(), 2u) << result;
  EXPECT_EQ(all[1]["path"], folder.at("b.txt"));
  const json& attributes = all[1]["attributes"];
  EXPECT_EQ(attributes["kMDItemFSSize"], 2);
  EXPECT_EQ(attributes["kMDItemFSName"], "b.txt");
  EXPECT_EQ(attributes["kMDItemFSInvisible"], false);
  EXPECT_TRUE(attributes["kMDItemContentTypeTree"].is_array());
  EXPECT_EQ(attributes["kMDItemFSContentChangeDate"].get<std::string>().size(), 20u);
  EXPECT_FALSE(attributes.contains("kMDItemTitle"));
}

TEST(AttributesInJSON, AreNullWhenTheyAreMissing) {
  const ScratchFolder folder;
  const json all = parsed(attrs({"--json", "--keys=kMDItemTitle", folder.file("a.txt")}));
  EXPECT_EQ(all[0]["attributes"], json({{"kMDItemTitle", nullptr}}));
}

TEST(AttributesInJSON, KeepEveryCharacterOfAName) {
  const ScratchFolder folder;
  const std::string name = "\x01\x1F\x7F\t\n\r\"\\\u0085\u2028\U0001F30A\u0301.txt";
  const json all = parsed(attrs({"--json", "--keys=kMDItemFSName", folder.file(name)}));
  EXPECT_EQ(all[0]["attributes"]["kMDItemFSName"], name);
}

TEST(AttributesInJSON, AreAnEmptyArrayWhenNoFileIsThere) {
  const Result result = attrs({"--json", "/none"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(parsed(result), json::array());
}

TEST(Attributes, AreTheSameWithTheELFLibrary) {
  const std::string photo = exampleLibrary() + "/Photos/Harbour at dawn.jpg";
  attrs({photo});  // the first reading of a file may change when it was last used
  for (const std::string form : {"--json", "--keys=kMDItemTitle,kMDItemKeywords,kMDItemLatitude"}) {
    const Result dylib = attrs({photo, form});
    EXPECT_EQ(dylib.status, 0) << dylib;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "Harbour at dawn", dylib.output);
    EXPECT_EQ(attrs({photo, form, "--plugin", files.elf}).output, dylib.output);
  }
}

}  // namespace
