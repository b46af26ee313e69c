// Plain words in the place of a query, and what they are taken for.
#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

class Words : public testing::Test {
 protected:
  Result findWith(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "find");
    return run({.arguments = std::move(arguments), .folder = scratch_.path()});
  }
  Texts found(std::vector<std::string> arguments) {
    arguments.push_back("--show=kMDItemFSName");
    return lines(findWith(std::move(arguments)).output);
  }
  // The query that is made of them.
  std::string explained(std::vector<std::string> words) {
    words.push_back("--explain");
    const Result result = findWith(words);
    EXPECT_EQ(result.status, 0) << result;
    EXPECT_TRUE(startsWith(result.output, "query    "));
    return result.output.substr(9, result.output.find('\n') - 9);
  }

  const ScratchFolder scratch_;
};

TEST_F(Words, AreLookedForInNamesAndText) {
  scratch_.file("Harbour at dawn.jpg");
  scratch_.file("a.txt", "The HARBOUR lay still.\nD\u00E0wn came.");
  scratch_.file("dawn.txt", "harbours");
  scratch_.file("harbour.txt", "dusk");
  scratch_.file("other.txt", "dawn");
  const Texts expected = {"Harbour at dawn.jpg", "a.txt", "dawn.txt"};
  EXPECT_EQ(found({"harbour", "dawn"}), expected);
  EXPECT_EQ(found({"harbour dawn"}), expected);
  EXPECT_EQ(found({"  dawn\t", "", "h\u00E1rb\u00D6ur\n"}), expected);
  EXPECT_EQ(found({"dawn\u3000harbour\u00A0"}), expected);  // blanks of other keyboards
  EXPECT_EQ(found({"dusk"}), Texts{"harbour.txt"});
}

TEST_F(Words, AreAnywhereInANameAndTheBeginningsOfWordsInAText) {
  scratch_.file("seaport.txt");
  scratch_.file("a.txt", "portside");
  scratch_.file("b.txt", "seaport");
  EXPECT_EQ(found({"port"}), (Texts{"a.txt", "seaport.txt"}));
}

TEST_F(Words, WithAStarArePatternsForNames) {
  for (const char* const file : {"a.txt", "A.TXT", "a.txt.old", "b"}) scratch_.file(file, "a.txt");
  EXPECT_EQ(found({"*.txt"}), (Texts{"A.TXT", "a.txt"}));
  EXPECT_EQ(found({"*"}).size(), 4u);
  EXPECT_EQ(found({"*.txt*", "old"}), Texts{"a.txt.old"});
}

TEST_F(Words, MeanThemselvesWhateverTheirCharacters) {
  for (const char* const word :
       {"5\"", "don't", "a\\b", "what?", "(a)",           "R&D",          "a|b",        "50%",  "$time.today",
        "!x",  "[cd]",  "a,b",  "C++",   "\"x\"",         "\u6771\u4EAC", "\U0001F30A", "\\",   "\"",
        "'",   "{",     "@#;",  "true",  "kMDItemFSName", "InRange",      "\\\"cd",     "a\x1B"}) {
    SCOPED_TRACE(word);
    const ScratchFolder own;
    own.file(std::string("x ") + word + " x");
    own.file("text", std::string("before ") + word + " after");
    own.file("other", "other");
    EXPECT_EQ(find({word, "--in", own.path(), "--count"}).output, "2\n");
  }
}

TEST_F(Words, AreExplained) {
  EXPECT_EQ(explained({"harbour"}),
            "(kMDItemDisplayName == \"*harbour*\"cd || kMDItemTextContent == \"harbour*\"cd)");
  EXPECT_EQ(explained({"a \"b\\c\"?", "*.d"}),
            "(kMDItemDisplayName == \"*a*\"cd || kMDItemTextContent == \"a*\"cd) && "
            "(kMDItemDisplayName == \"*\\\"b\\\\c\\\"\\?*\"cd || kMDItemTextContent == "
            "\"\\\"b\\\\c\\\"\\?*\"cd) && "
            "kMDItemDisplayName == \"*.d\"cd");
}

TEST_F(Words, AreExplainedWithTheirPlaces) {
  scratch_.folder("a");
  scratch_.file("a/harbour");
  const Result result =
      findWith({"kMDItemFSSize > 0", "--explain", "--in", "a", "--in", ".", "--scope=home,all", "--within",
                "dawn", "--exclude", "*.o", "--depth", "2", "--one-file-system", "--no-hidden"});
  EXPECT_EQ(result.output,
            "query    kMDItemFSSize > 0\n"
            "within   (kMDItemDisplayName == \"*dawn*\"cd || kMDItemTextContent == \"dawn*\"cd)\n"
            "in       " +
                scratch_.at("a") + "\nin       " + scratch_.path() +
                "\n"
                "scope    kMDQueryScopeHome\nscope    kMDQueryScopeAllIndexed\n"
                "exclude  *.o\nlimit    depth 2\nlimit    one file system\nlimit    no hidden files\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(Words, MadeIntoAQueryFindTheSameWithIt) {
  for (const char* const file : {"5\" disk?.txt", "a\\b", "disk", "5"}) scratch_.file(file);
  EXPECT_EQ(found({"5\"", "disk?"}), Texts{"5\" disk?.txt"});
  EXPECT_EQ(found({explained({"5\"", "disk?"})}), Texts{"5\" disk?.txt"});
}

TEST_F(Words, AreNotWhatComparesOrJoins) {
  for (const std::string query : {"kMDItemFSName = ", "a==", "kMDItemFSSize <", "x > 3 y", "C++ => D",
                                  "a && b", "a || b", "InRange(a, 1", "inrange  (", "!= 3", "\"a = b\""}) {
    const Result result = findWith({query});
    EXPECT_EQ(result.status, 2) << query;
    EXPECT_TRUE(startsWith(result.errors, "shotlight: the query can't be understood: ")) << query;
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "^", result.errors);
    EXPECT_EQ(findWith({query, "--explain"}).errors, result.errors);
  }
}

TEST_F(Words, MayBeThoseThatAnotherQueryIsWithin) {
  scratch_.file("harbour.txt", "1");
  scratch_.file("dawn.txt", "1");
  EXPECT_EQ(found({"kMDItemFSSize == 1", "--within", "harbour"}), Texts{"harbour.txt"});
  EXPECT_EQ(found({"harbour", "--within", "kMDItemFSSize == 1"}), Texts{"harbour.txt"});
}

TEST_F(Words, AreFollowed) {
  const std::string path = scratch_.file("harbour.txt");
  const Result result = findWith({"harbour", "--live", "--for", "0"});
  EXPECT_EQ(result.output, "+ " + path + "\n");
}

}  // namespace
