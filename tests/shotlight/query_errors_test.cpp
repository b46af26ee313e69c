// Queries that can't be understood: the place is shown.
#include "tests/shotlight/run.h"

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
  for (const char* query : {"kMDItemFSName == \"\xFF\"", "\xC3", "kMDItemFSName == \"\xED\xA0\x80\""}) {
    expectError(find({query}), "the query is not valid UTF-8; write it in UTF-8");
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
