// What the plug-in adds to the calls that it must make.
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "bench/calls/rows.h"
#include "bench/calls/table.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/tier.h"

namespace {

using bench::calls::Row;

TEST(Calls, OfThePluginAndOfItsTwinAreTheSame) {
  const bench::calls::Comparison comparison = bench::calls::compareCalls();
  EXPECT_EQ(comparison.difference, "");
  EXPECT_GT(comparison.calls, 1000u);
}

TEST(Calls, TakeWhatTheDocumentSays) {
  if (!isLongTier()) GTEST_SKIP() << "counted in the long tier only";
  constexpr double kMore = 0.03, kMost = 1.35;
  std::map<std::string, Row> documented;
  for (const Row& row : bench::calls::rowsIn(bench::calls::kDocument)) documented[row.what] = row;
  const auto rows = bench::calls::countRows();
  ASSERT_TRUE(rows) << "nothing was counted: valgrind and libc6-dbg:i386 must be installed";
  EXPECT_EQ(rows->size(), documented.size()) << "bench-calls --write makes the table anew";
  for (const Row& row : *rows) {
    SCOPED_TRACE(row.what);
    ASSERT_TRUE(documented.contains(row.what)) << "bench-calls --write makes the table anew";
    const Row& limit = documented[row.what];
    EXPECT_GT(row.stubs, 0);
    EXPECT_GT(row.twin, row.stubs);
    EXPECT_LE(row.ratio(), kMost);
    EXPECT_LE(row.dylibRatio(), kMost);
    EXPECT_LE(row.ratio(), limit.ratio() + kMore) << row.plugin << " to " << row.twin;
    EXPECT_LE(row.dylibRatio(), limit.dylibRatio() + kMore) << row.dylib << " to " << row.dylibTwin;
  }
}

std::string contentOf(const std::string& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

TEST(CallsTable, IsPutWhereTheDocumentHasItAndReadFromThere) {
  const ScratchFolder folder;
  const Row former = {"former", 1, 2, 3, 4, 5}, first = {"`first` call", 10, 30, 20, 25, 16},
            second = {"second", 5, 8, 7, 9, 8};
  const std::string document = folder.file(
      "document.md", "Before\n\n| a |\n|---|\n\n" + bench::calls::asMarkdown({former}) + "\nAfter\n");
  ASSERT_TRUE(bench::calls::writeInto(document, {first, second}));
  EXPECT_EQ(contentOf(document),
            "Before\n\n| a |\n|---|\n\n"
            "| call | stubs | plug-in | twin | ratio | dylib | its twin | ratio |\n"
            "|---|---|---|---|---|---|---|---|\n"
            "| `first` call | 10 | 30 | 20 | 1.50 | 25 | 16 | 1.56 |\n"
            "| second | 5 | 8 | 7 | 1.14 | 9 | 8 | 1.12 |\n"
            "\nAfter\n");
  const auto rows = bench::calls::rowsIn(document);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(bench::calls::asText(rows), bench::calls::asText({first, second}));
}

TEST(CallsTable, IsNotPutWhereThereIsNone) {
  const ScratchFolder folder;
  const std::string document = folder.file("document.md", "Text\n");
  EXPECT_FALSE(bench::calls::writeInto(document, {}));
  EXPECT_EQ(contentOf(document), "Text\n");
  EXPECT_TRUE(bench::calls::rowsIn(document).empty());
}

}  // namespace
