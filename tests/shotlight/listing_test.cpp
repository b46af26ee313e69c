// Results as they are printed: while others are searched for, as JSON, and lists in every layout.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "tests/shotlight/opened_folders.h"
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

using nlohmann::json;

const char kEverything[] = "kMDItemFSName == \"*\"";

// 30,000 files; a search looks at them in the order of the folders.
class LargeTree : public testing::Test {
 protected:
  static constexpr int kFolders = 60, kFiles = 500;

  static void SetUpTestSuite() {
    tree_ = new ScratchFolder;
    const std::string file = tree_->file("file");
    for (int i = 0; i < kFolders; ++i) {
      const std::string folder = tree_->folder(std::to_string(100 + i));
      for (int k = 0; k < kFiles; ++k)
        ASSERT_EQ(link(file.c_str(), (folder + '/' + std::to_string(k)).c_str()), 0);
    }
  }
  static void TearDownTestSuite() { delete std::exchange(tree_, nullptr); }

  static std::vector<std::string> folders() {
    std::vector<std::string> folders;
    for (int i = 0; i < kFolders; ++i) folders.push_back(tree_->at(std::to_string(100 + i)));
    return folders;
  }

  // Its first line alone is read, and then the pipe is closed.
  static Result firstLine(const std::string& options) {
    return run({.arguments = {"-c", files.program + " find '" + kEverything + "' " + options +
                                        " --show kMDItemFSName | head -1"},
                .folder = tree_->path(),
                .program = "/bin/sh"});
  }

  static const ScratchFolder* tree_;
};
const ScratchFolder* LargeTree::tree_ = nullptr;

TEST_F(LargeTree, IsNotSearchedToItsEndForItsFirstResult) {
  for (const std::string options : {"", "--jsonl", "--json"}) {
    SCOPED_TRACE(options);
    const OpenedFolders opened(folders());
    const Result result = firstLine(options);
    EXPECT_EQ(lines(result.output).size(), 1u) << result;
    EXPECT_EQ(result.errors, "");  // of a search that was over there would be a count
    const size_t count = opened.names().size();
    EXPECT_GT(count, 0u);
    EXPECT_LT(count, size_t{kFolders / 2});
  }
}

TEST_F(LargeTree, IsSearchedForAsManyResultsAsAreWanted) {
  const OpenedFolders opened(folders());
  const Result result = find({kEverything, "--in", tree_->path(), "--limit", "3"});
  EXPECT_EQ(lines(result.output).size(), 3u);
  EXPECT_TRUE(matches(result.errors, "3 results, and there are more, in [0-9.]+ s\n")) << result;
  EXPECT_EQ(opened.names().size(), 1u);
}

TEST_F(LargeTree, IsSearchedToItsEndForAnOrder) {
  const Result result = firstLine("--sort kMDItemFSName:desc");
  EXPECT_EQ(result.output, "file\n") << result;
}

TEST_F(LargeTree, IsPrintedWhole) {
  const std::string count = std::to_string(kFolders * (kFiles + 1) + 1);
  for (const Output output : {Output::pipe, Output::terminal}) {
    const Result result =
        run({.arguments = {"find", kEverything, "--in", tree_->path(), "--show", "kMDItemPath"},
             .output = output});
    Texts paths = lines(result.output);
    if (output == Output::terminal) {
      EXPECT_EQ(paths.front(), "Path");
      paths.erase(paths.begin());
    }
    EXPECT_EQ(std::to_string(paths.size()), count);
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));
    EXPECT_EQ(std::adjacent_find(paths.begin(), paths.end()), paths.end());
    EXPECT_EQ(result.errors.substr(0, result.errors.find(' ')), count);
  }
}

TEST(Table, GetsWiderFromPartToPart) {
  const ScratchFolder scratch;
  for (int i = 0; i < 2000; ++i) scratch.file("a/" + std::to_string(i));
  const std::string longName(30, 'x');
  scratch.file("b/" + longName, "123");
  const Result result = run({.arguments = {"find", "kMDItemFSSize >= 0", "--in", scratch.path(), "--show",
                                           "kMDItemFSName,kMDItemFSSize"},
                             .output = Output::terminal});
  const Texts rows = lines(result.output);
  ASSERT_EQ(rows.size(), 2002u);
  EXPECT_EQ(rows[0], "File  Size");
  EXPECT_EQ(rows[1], "0        0");
  EXPECT_EQ(rows[2000], "999      0");
  EXPECT_EQ(rows[2001], longName + "     3");
}

json jsonOf(const std::vector<std::string>& arguments) {
  return json::parse(find(arguments).output, nullptr, false);
}

class Json : public testing::Test {
 protected:
  const ScratchFolder scratch_;
};

TEST_F(Json, IsAnArrayOfObjectsWithTheKeysThatAreShown) {
  scratch_.file("a.txt", "12345");
  scratch_.file("b \"\\.txt");
  EXPECT_EQ(
      jsonOf({kEverything, "--in", scratch_.path(), "--json"}),
      json({{{"kMDItemDisplayName", "a.txt"}, {"kMDItemFSSize", 5}, {"kMDItemPath", scratch_.at("a.txt")}},
            {{"kMDItemDisplayName", "b \"\\.txt"},
             {"kMDItemFSSize", 0},
             {"kMDItemPath", scratch_.at("b \"\\.txt")}}}));
}

TEST_F(Json, IsReadable) {
  scratch_.file("a.txt", "12345");
  EXPECT_EQ(
      find({kEverything, "--in", scratch_.path(), "--json", "--show", "kMDItemFSName,kMDItemFSSize"}).output,
      "[\n  {\n    \"kMDItemFSName\": \"a.txt\",\n    \"kMDItemFSSize\": 5\n  }\n]\n");
}

TEST_F(Json, HasEachValueInItsType) {
  scratch_.file("a.txt", "12345");
  const json all = jsonOf({kEverything, "--in", scratch_.path(), "--json", "--show",
                           "kMDItemFSSize,kMDItemFSInvisible,kMDItemTitle,kMDItemContentTypeTree,"
                           "kMDItemFSContentChangeDate,kMDItemFSSize"});
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].size(), 5u);
  EXPECT_EQ(all[0]["kMDItemFSSize"], 5);
  EXPECT_EQ(all[0]["kMDItemFSInvisible"], false);
  EXPECT_TRUE(all[0].contains("kMDItemTitle"));
  EXPECT_EQ(all[0]["kMDItemTitle"], nullptr);
  EXPECT_TRUE(all[0]["kMDItemContentTypeTree"].is_array());
  EXPECT_TRUE(matches(all[0]["kMDItemFSContentChangeDate"], "20[0-9-]+T[0-9:]+Z"));
}

TEST_F(Json, IsAnEmptyArrayForNoResults) {
  const Result result = find({kEverything, "--in", scratch_.path(), "--json"});
  EXPECT_EQ(result.output, "[]\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(find({kEverything, "--in", scratch_.path(), "--jsonl"}).output, "");
}

TEST_F(Json, MayBeAnObjectALine) {
  scratch_.file("a\n.txt", "12345");
  scratch_.file("b.txt");
  const Result result = find(
      {kEverything, "--in", scratch_.path(), "--jsonl", "--show", "kMDItemFSName,kMDItemContentTypeTree"});
  const Texts objects = lines(result.output);
  ASSERT_EQ(objects.size(), 2u) << result;
  EXPECT_EQ(json::parse(objects[0])["kMDItemFSName"], "a\n.txt");
  EXPECT_EQ(json::parse(objects[1])["kMDItemFSName"], "b.txt");
  EXPECT_TRUE(json::parse(objects[1])["kMDItemContentTypeTree"].is_array());
}

TEST_F(Json, IsInTheOrderThatIsAskedFor) {
  for (const char* name : {"a", "b", "c"}) scratch_.file(name);
  const json all = jsonOf({kEverything, "--in", scratch_.path(), "--json", "--show", "kMDItemFSName",
                           "--sort", "kMDItemFSName:desc", "--limit", "2"});
  EXPECT_EQ(all, json({{{"kMDItemFSName", "c"}}, {{"kMDItemFSName", "b"}}}));
}

TEST_F(Json, EscapesWhatATerminalWouldObey) {
  const std::string name = "a\x1B[31m\u0085\u202E\u2028\x7F\u00E9\U0001F30A";
  scratch_.file(name);
  const Result result = find({kEverything, "--in", scratch_.path(), "--jsonl", "--show", "kMDItemFSName"});
  EXPECT_EQ(result.output,
            "{\"kMDItemFSName\": \"a\\u001b[31m\\u0085\\u202e\\u2028\\u007f\u00E9\U0001F30A\"}\n");
  EXPECT_EQ(json::parse(result.output)["kMDItemFSName"], name);
}

TEST_F(Json, IsWellFormedAfterAnInterruption) {
  scratch_.file("a.txt");
  const Result result =
      run({.arguments = {"find", kEverything, "--in", scratch_.path(), "--json"}, .pendingSignal = SIGTERM});
  EXPECT_EQ(result.status, 128 + SIGTERM);
  EXPECT_EQ(result.output, "[]\n");
}

TEST_F(Json, IsTheSameWithTheELFLibrary) {
  scratch_.file("a.txt", "12345");
  const Result dylib = find({kEverything, "--in", scratch_.path(), "--json"});
  const Result elf = find({kEverything, "--in", scratch_.path(), "--json", "--plugin", files.elf});
  EXPECT_EQ(elf.output, dylib.output);
}

TEST_F(Json, GoesWithResultsOnly) {
  const std::string ending = " don't go together; leave one out";
  expectError(find({kEverything, "--json", "--jsonl"}), "--json, --jsonl and -0" + ending);
  expectError(find({kEverything, "--jsonl", "-0"}), "--json, --jsonl and -0" + ending);
  for (const std::string option : {"--json", "--jsonl"}) {
    expectError(find({kEverything, option, "--count"}), "--count and " + option + ending);
    expectError(find({kEverything, option, "--live"}), "--live and " + option + ending);
    expectError(find({kEverything, option, "--values", "kMDItemTitle"}), "--values and " + option + ending);
  }
}

// A JPEG that holds nothing but what is said of it.
std::string photo(const std::string& headline, const std::vector<std::string>& keywords) {
  std::string items;
  for (const std::string& keyword : keywords) items += "<rdf:li>" + keyword + "</rdf:li>";
  const std::string packet = std::string("http://ns.adobe.com/xap/1.0/") + '\0' +
                             "<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
                             "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                             "<rdf:Description xmlns:dc='http://purl.org/dc/elements/1.1/' "
                             "xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/'>"
                             "<photoshop:Headline>" +
                             headline +
                             "</photoshop:Headline>"
                             "<dc:subject><rdf:Bag>" +
                             items +
                             "</rdf:Bag></dc:subject>"
                             "</rdf:Description></rdf:RDF></x:xmpmeta>";
  const size_t size = packet.size() + 2;
  return "\xFF\xD8\xFF\xE1" + std::string{static_cast<char>(size >> 8), static_cast<char>(size)} + packet +
         "\xFF\xD9";
}

TEST(Lists, TellWhereEachOfTheirValuesBeginsAndEnds) {
  const ScratchFolder scratch;
  const std::vector<std::string> several[] = {{"a", "b"}, {"a, b"}, {"\"a\"", "b"}, {"a"}};
  int count = 0;
  for (const auto& keywords : several)
    scratch.file(std::to_string(count++) + ".jpg", photo("a, b", keywords));
  const std::vector<std::string> arguments = {"find",   "kMDItemHeadline == \"a, b\"",
                                              "--in",   scratch.path(),
                                              "--show", "kMDItemHeadline,kMDItemKeywords"};
  EXPECT_EQ(run({.arguments = arguments}).output,
            "a, b\ta, b\na, b\t\"a, b\"\na, b\t\"\"\"a\"\"\", b\na, b\ta\n");
  EXPECT_EQ(lines(run({.arguments = arguments, .output = Output::terminal}).output),
            (Texts{"Headline  Keywords", "a, b      a, b", "a, b      \"a, b\"", "a, b      \"\"\"a\"\"\", b",
                   "a, b      a"}));
  std::vector<std::string> asJson = arguments;
  asJson.push_back("--json");
  const json all = json::parse(run({.arguments = asJson}).output);
  ASSERT_EQ(all.size(), std::size(several));
  for (size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i]["kMDItemKeywords"], json(several[i]));
}

}  // namespace
