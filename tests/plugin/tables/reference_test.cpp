// The reference for people who write host code: each registered member has its text, and each text its
// member.
#include "docs/generator/reference.h"

#include <algorithm>
#include <sstream>

#include "tests/plugin/fixture.h"

namespace {

class Reference : public PluginTest {
 protected:
  void SetUp() override { start(); }

  // The sentences with one change.
  static std::string changed(const std::string& from, const std::string& to) {
    std::string text = docs::readFile(SENTENCES);
    const size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return place == std::string::npos ? text : text.replace(place, from.size(), to);
  }

  static std::string mistakesIn(const std::string& sentences) {
    try {
      docs::referencePage(sentences);
    } catch (const docs::ReferenceError& error) {
      return error.what();
    }
    return "none";
  }
};

Texts linesOf(const std::string& text) {
  Texts lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The first line that is otherwise is told, not both pages.
TEST_F(Reference, IsMadeOfWhatIsRegisteredAndTheSentences) {
  Texts made = linesOf(docs::referencePage(docs::readFile(SENTENCES)));
  Texts page = linesOf(docs::readFile(REFERENCE_PAGE));
  const size_t length = std::max(made.size(), page.size());
  made.resize(length);
  page.resize(length);
  const auto [wanted, found] = std::mismatch(made.begin(), made.end(), page.begin());
  if (wanted == made.end()) return;
  ADD_FAILURE() << REFERENCE_PAGE << ':' << found - page.begin() + 1 << ": " << *found
                << "\nshould be: " << *wanted << "\nrun ninja -C build/default reference";
}

TEST_F(Reference, MissesTheTextOfAMember) {
  EXPECT_EQ(mistakesIn(changed("[Execute(flags as integer) as boolean]", "[Run]")),
            "[Run]: describes nothing that is registered, or again\n"
            "MDQueryZNK.Execute(flags as integer) as boolean: has no block\n");
  EXPECT_EQ(mistakesIn(changed("[ShotlightZNK(searchString as string) as integer]", "[Shotlight]")),
            "[Shotlight]: describes nothing that is registered, or again\n"
            "ShotlightZNK(searchString as string) as integer: has no block\n");
}

TEST_F(Reference, MissesTheTextOfAClass) {
  const std::string text = docs::readFile(SENTENCES);
  const size_t begin = text.find("[class MDQueryBatchingParamsZNK]"), end = text.find("[global]");
  EXPECT_EQ(mistakesIn(text.substr(0, begin) + text.substr(end)), "MDQueryBatchingParamsZNK: has no block\n");
  EXPECT_EQ(mistakesIn(text.substr(0, end)), "the methods without a class: have no block\n");
}

TEST_F(Reference, WantsEachMemberOnceAndAmongItsClass) {
  const std::string text = docs::readFile(SENTENCES);
  EXPECT_EQ(mistakesIn(text + "\n[Stop]\nEnds.\n"),
            "[Stop]: describes nothing that is registered, or again\n");
  EXPECT_EQ(mistakesIn(changed("[class MDItemZNK]", "[Stop]\nEnds.\n\n[class MDItemZNK]")),
            "[Stop]: describes nothing that is registered, or again\n");
}

TEST_F(Reference, WantsTheFieldsOfTheDeclaration) {
  EXPECT_EQ(mistakesIn(changed("\nflags: 0, `kMDQuerySynchronous`", "\nflag: 0, `kMDQuerySynchronous`")),
            "MDQueryZNK.Execute(flags as integer) as boolean: has no flags\n"
            "MDQueryZNK.Execute(flags as integer) as boolean: has no use for flag\n");
  EXPECT_EQ(mistakesIn(changed("For `Execute`: wait until everything is gathered.\nsince: macOS 10.6", "")),
            "MDQueryZNK.kMDQuerySynchronous=1: has no sentence\n"
            "MDQueryZNK.kMDQuerySynchronous=1: has no since\n");
}

TEST_F(Reference, HasAWordOfEachMemberButTheKeys) {
  const std::string page = docs::readFile(REFERENCE_PAGE);
  int members = 0;
  for (const std::string& name : host::registeredClasses()) {
    for (const host::Member& member : host::members(name)) {
      if (member.name.starts_with("kMDItem")) continue;
      EXPECT_NE(page.find("\n\n`" + member.text + "`\n\n"), std::string::npos) << member.text;
      ++members;
    }
  }
  EXPECT_EQ(members, 2 + 27 + 3 + 9 + 6 + 8 + 5 + 6);
}

}  // namespace
