// Queries that can't be understood: the place is shown.
#include <fcntl.h>
#include <sys/stat.h>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kSeeHelp[] = "see shotlight find --help for the form of a query";

// The query is shown, a caret is under the column, and nothing else is printed.
void expectCaret(const std::string& query, const std::string& shown, size_t column) {
  SCOPED_TRACE(query);
  const Result result = find({query, "--in", "/dev"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  const auto printed = lines(result.errors);
  ASSERT_EQ(printed.size(), 4u) << result;
  EXPECT_TRUE(matches(printed[0], "shotlight: the query can't be understood: ..*"));
  EXPECT_EQ(printed[1], "  " + shown);
  EXPECT_EQ(printed[2], "  " + std::string(column, ' ') + "^");
  EXPECT_EQ(printed[3], kSeeHelp);
}

void expectCaret(const std::string& query, size_t column) {
  expectCaret(query, query, column);
}

TEST(BadQuery, IsShownWithACaretUnderThePlaceOfTheMistake) {
  expectCaret("kMDItemFSName ==", 16);
  expectCaret("kMDItemFSSize == 1 && (", 23);
  expectCaret("kMDItemFSSize == 1 kMDItemFSSize", 19);
  expectCaret("(kMDItemFSSize == 1", 0);
  expectCaret("kMDItemFSSize == 1)", 18);
  expectCaret("== 3", 0);
}

TEST(BadQuery, HasItsCaretUnderThePlaceAfterTextOfOtherWidths) {
  expectCaret("kMDItemFSName == \"caf\u00E9\" && (", 28);     // one unit, one column
  expectCaret("kMDItemFSName == \"cafe\u0301\" && (", 28);    // two units, one column
  expectCaret("kMDItemFSName == \"\u6771\u4EAC\" && (", 28);  // two units, four columns
  expectCaret("kMDItemFSName == \"\U0001F30A\" && (", 26);    // two units, two columns
  expectCaret("kMDItemFSName == \"\u0395\u03BB\" && (", 26);  // two units, two columns
}

TEST(BadQuery, IsShownOnOneLineWhateverControlCharactersItHas) {
  expectCaret("kMDItemFSSize\t==\n1 && (", "kMDItemFSSize\\t==\\n1 && (", 25);
  expectCaret("kMDItemFSName == \"\x1B[31m\" && (", "kMDItemFSName == \"\\x1B[31m\" && (", 32);
}

TEST(BadQuery, IsShownAsItWasTypedWhereItHasBackslashes) {
  expectCaret("kMDItemFSName == \"a\\*b\" && (", 28);
}

TEST(BadQuery, WithoutTheEndOfItsTextSaysSo) {
  const Result result = find({"kMDItemFSName == \"abc"});
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(startsWith(result.errors, "shotlight: the query can't be understood: "));
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "\n  kMDItemFSName == \"abc\n", result.errors);
}

TEST(BadQuery, ThatIsNotUTF8SaysSo) {
  const std::pair<std::string, const char*> rows[] = {
      {"kMDItemFSName == \"\xFF\"", "19, \\xFF"},
      {"\xC3", "1, \\xC3"},
      {"\xA9", "1, \\xA9"},
      {"kMDItemFSName == \"\xA9\"", "19, \\xA9"},
      {"kMDItemFSName == \"\u6771\u4EAC\xED\xA0\x80\"", "25, \\xED"},
  };
  for (const auto& [query, place] : rows)
    expectError(find({query}),
                std::string("the query is not valid UTF-8 at byte ") + place + "; write it in UTF-8");
}

TEST(BadQuery, ThatStartsWithAByteOrderMarkSaysSo) {
  expectError(find({"\xEF\xBB\xBFkMDItemFSName == x"}),
              "the query starts with a byte order mark, at byte 1; leave it out");
}

Texts warningsOf(const Result& result) {
  Texts warnings;
  const std::string start = "shotlight: warning: ";
  for (const std::string& line : lines(result.errors)) {
    if (line.starts_with(start)) warnings.push_back(line.substr(start.size()));
  }
  return warnings;
}

TEST(DoubtfulQuery, IsRunAndWarnedOf) {
  const ScratchFolder scratch;
  scratch.file("a.txt", "");
  const auto run = [&](const std::string& query) { return find({query, "--in", scratch.path()}); };
  const std::pair<const char*, Texts> rows[] = {
      {"kMDItemFSNam == x", {"no file has kMDItemFSNam; did you mean kMDItemFSName?"}},
      {"fsname == x", {"no file has fsname; did you mean kMDItemFSName?"}},
      {"kMDItemTitel == x", {"no file has kMDItemTitel; did you mean kMDItemTitle?"}},
      {"kMDItemNonsense == x || kMDItemNonsense == y",
       {"no file has kMDItemNonsense; shotlight keys lists the keys"}},
      {"kMDItemFSSize == '1k\t'",
       {"kMDItemFSSize == '1k\\t': kMDItemFSSize is a number, which this isn't; write one, such as 1000"}},
      {"kMDItemFSSize == $time.today",
       {"kMDItemFSSize == $time.today: kMDItemFSSize is a number, which this isn't; write one, such as "
        "1000"}},
      {"kMDItemFSInvisible == 5",
       {"kMDItemFSInvisible == 5: kMDItemFSInvisible is true or false; write == true or == false"}},
      {"kMDItemFSInvisible == 1", {}},
      {"kMDItemFSContentChangeDate == yesterday",
       {"kMDItemFSContentChangeDate == yesterday: kMDItemFSContentChangeDate is a date, which this isn't; "
        "write one, "
        "such as $time.today or 2011-03-05"}},
      {"kMDItemFSName == a && kMDItemPixelWidth > 5", {}},
  };
  for (const auto& [query, expected] : rows) {
    const Result result = run(query);
    EXPECT_EQ(result.status, 1) << query;
    EXPECT_EQ(warningsOf(result), expected);
  }
  const Result unequal = run("kMDItemFSSiz != 3 && kMDItemFSName == a.txt");
  EXPECT_EQ(unequal.status, 0) << unequal;
  EXPECT_EQ(lines(unequal.output).size(), 1u);
  EXPECT_EQ(warningsOf(unequal), Texts{"no file has kMDItemFSSiz; did you mean kMDItemFSSize?"});
  const Result within = find({"kMDItemFSName == *", "--within", "size > 3", "--in", scratch.path()});
  EXPECT_EQ(within.status, 1);
  EXPECT_EQ(warningsOf(within), Texts{"no file has size; shotlight keys lists the keys"});
}

// As it is printed by find and attrs.
TEST(ADate, ThatIsPrintedFindsItsFile) {
  const ScratchFolder scratch;
  const struct {
    const char* name;
    timespec time;
  } files[] = {{"a", {1299307330, 700'000'000}}, {"b", {1299307331, 0}}, {"c", {-26'000'000, 999'000'000}}};
  for (const auto& [name, time] : files) {
    const timespec times[] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, scratch.file(name).c_str(), times, 0), 0);
  }
  for (const auto& [name, time] : files) {
    const std::string key = "kMDItemFSContentChangeDate", path = scratch.at(name);
    const std::string found =
        find({std::string("kMDItemFSName == ") + name, "--show", key, "--in", scratch.path()}).output;
    const std::string attribute = run({.arguments = {"attrs", path, "--keys", key}}).output;
    const std::string date = found.substr(0, found.find('\n'));
    EXPECT_EQ(attribute, key + " = " + date + '\n');
    for (const std::string& value : {date, '"' + date + '"'}) {
      const Result result = find({key + " == " + value, "--show", "kMDItemFSName", "--in", scratch.path()});
      EXPECT_EQ(result.output, std::string(name) + '\n') << result;
      EXPECT_EQ(warningsOf(result), Texts{});
    }
  }
}

TEST(BadQuery, ThatIsEmptyGetsAnExample) {
  for (const char* query : {"", " ", " \t\n"}) {
    expectError(
        find({query}),
        "the query is empty; write one, such as 'kMDItemFSName == \"*.txt\"', or words, such as harbour");
  }
}

TEST(BadQuery, OfWithinIsShown) {
  const Result result =
      find({"kMDItemFSSize == 1", "--in", "/dev", "--within", "kMDItemFSName == \"a\" || (kMDItemFSSize"});
  EXPECT_EQ(result.status, 2);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "\n  kMDItemFSName == \"a\" || (kMDItemFSSize\n", result.errors);
}

TEST(BadQuery, IsTheSameErrorWithTheELFLibrary) {
  const Result dylib = find({"kMDItemFSSize == 1 && ("});
  const Result elf = find({"kMDItemFSSize == 1 && (", "--plugin", files.elf});
  EXPECT_EQ(elf.errors, dylib.errors);
  EXPECT_EQ(elf.status, 2);
}

TEST(BadQuery, OfManyParenthesesIsAnErrorAndNoCrash) {
  const Result result = find({std::string(100000, '(') + "a == 1"});
  EXPECT_EQ(result.status, 2);
  EXPECT_TRUE(startsWith(result.errors, "shotlight: the query can't be understood: "));
}

}  // namespace
