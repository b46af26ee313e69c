// Tables are no wider than the terminal.
#include <algorithm>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kEllipsis[] = "\u2026";

class Width : public testing::Test {
 protected:
  Texts table(unsigned short columns, const std::string& keys, std::vector<std::string> environment = {},
              Output output = Output::terminal) const {
    return lines(
        run({.arguments = {"find", "kMDItemFSName == \"*\"", "--in", scratch_.path(), "--show", keys},
             .output = output,
             .environment = std::move(environment),
             .columns = columns})
            .output);
  }

  // Of texts whose characters are one column wide.
  static size_t columnsOf(const std::string& text) {
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
  }

  const ScratchFolder scratch_;
};

TEST_F(Width, IsThatOfTheTerminal) {
  scratch_.file("a rather long name of a file.txt", std::string(12345, 'x'));
  for (const unsigned short columns : {20, 21, 30, 40, 60}) {
    const Texts rows = table(columns, "kMDItemDisplayName,kMDItemFSSize,kMDItemPath");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(columnsOf(rows[1]), columns) << rows[1];
    EXPECT_LE(columnsOf(rows[0]), columns) << rows[0];
    EXPECT_NE(rows[1].find("  12345  "), std::string::npos) << rows[1];
    EXPECT_NE(rows[1].find(kEllipsis), std::string::npos) << rows[1];
  }
}

TEST_F(Width, IsTakenFromTheWidestColumn) {
  scratch_.file("0123456789abcdefghij.txt");
  const Texts rows = table(40, "kMDItemFSName,kMDItemContentType");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1], std::string("0123456789") + kEllipsis + "efghij.txt  public.plain-text");
}

TEST_F(Width, IsTakenFromTheEndOfWhatIsNoName) {
  scratch_.file("a.txt");
  EXPECT_EQ(table(15, "kMDItemFSName,kMDItemContentType").at(1), std::string("a.txt  public.") + kEllipsis);
}

TEST_F(Width, LeavesWhatFits) {
  scratch_.file("a.txt", "1");
  const Texts whole = table(0, "kMDItemFSName,kMDItemPath");
  const auto columns = static_cast<unsigned short>(whole.at(1).size());
  EXPECT_EQ(table(columns, "kMDItemFSName,kMDItemPath"), whole);
  EXPECT_NE(table(columns - 1, "kMDItemFSName,kMDItemPath"), whole);
}

TEST_F(Width, IsSaidByTheEnvironmentWhereTheTerminalDoesNot) {
  scratch_.file(std::string(100, 'n'));
  const auto width = [&](unsigned short columns, std::vector<std::string> environment) {
    return columnsOf(table(columns, "kMDItemFSName", std::move(environment)).at(1));
  };
  EXPECT_EQ(width(0, {"COLUMNS=30"}), 30u);
  EXPECT_EQ(width(50, {"COLUMNS=30"}), 50u);
  for (const char* const none : {"COLUMNS=", "COLUMNS=0", "COLUMNS=wide", "COLUMNS=-3", "COLUMNS=30x"})
    EXPECT_EQ(width(0, {none}), 100u) << none;
}

TEST_F(Width, IsNothingToOtherPrograms) {
  const std::string name(200, 'n');
  scratch_.file(name);
  EXPECT_EQ(table(0, "kMDItemFSName", {"COLUMNS=30"}, Output::pipe), Texts{name});
}

TEST_F(Width, CountsWideCharactersTwiceAndCombiningOnesNot) {
  std::string wide, combined;
  for (int i = 0; i < 10; ++i) wide += "\u6771", combined += "e\u0301";
  scratch_.file(wide);
  scratch_.file(combined);
  const auto start = [](const std::string& text, size_t bytes) { return text.substr(0, bytes); };
  const auto end = [](const std::string& text, size_t bytes) { return text.substr(text.size() - bytes); };
  // Of 20 and 10 columns. Six are left beside the ellipsis; a wide character needs two of them.
  EXPECT_EQ(sorted(table(7, "kMDItemFSName")), sorted({"File", start(wide, 3) + kEllipsis + end(wide, 3),
                                                       start(combined, 9) + kEllipsis + end(combined, 9)}));
  EXPECT_EQ(sorted(table(20, "kMDItemFSName")), sorted({"File", wide, combined}));
}

TEST_F(Width, IsKeptByColors) {
  const std::string name(100, 'n');
  scratch_.folder(name);
  EXPECT_EQ(table(21, "kMDItemFSName", {"TERM=xterm"}).at(1),
            "\x1B[01;34m" + std::string(10, 'n') + kEllipsis + std::string(10, 'n') + "\x1B[0m");
}

// Numbers are never cut, and a column that can't be narrower makes lines longer.
TEST_F(Width, IsLargerThanThatOfATinyTerminal) {
  scratch_.file("a name of a file", std::string(1234567, 'x'));
  const Texts rows = table(8, "kMDItemFSSize,kMDItemFSName");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1], std::string("1234567  a ") + kEllipsis + "e");
}

TEST_F(Width, IsThatOfEveryTable) {
  const Texts rows = lines(run({.arguments = {"schema", "kMDItemTitle", "kMDItemAuthors"},
                                .output = Output::terminal,
                                .columns = 60})
                               .output);
  ASSERT_EQ(rows.size(), 3u);
  for (const std::string& row : rows) EXPECT_LE(columnsOf(row), 60u) << row;
  EXPECT_TRUE(rows[1].starts_with("kMDItemTitle ")) << rows[1];
  EXPECT_TRUE(rows[2].starts_with("kMDItemAuthors ")) << rows[2];
}

}  // namespace
