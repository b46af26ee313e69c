// What commands cost, in instructions: of those alone a limit holds on every machine; and in memory.
#include <cstdlib>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "bench/instructions.h"
#include "bench/processes.h"
#include "bench/rows.h"
#include "bench/tree.h"
#include "tests/support/tier.h"

namespace {

using bench::Command;

class Cost : public testing::Test {
 protected:
  void SetUp() override {
    if (!isLongTier()) GTEST_SKIP() << "counted in the long tier only";
    ::setenv("LC_ALL", "C", 1);  // in which find and sort compare quickest
  }
};

double counted(const Command& less, const Command& more, double howManyMore) {
  const auto each = bench::instructionsEach(less, more, howManyMore);
  if (each) return *each;
  ADD_FAILURE() << "nothing was counted: valgrind and libc6-dbg:i386 must be installed, and " << less.front()
                << " must not fail";
  return 0;
}

// The limits are what was counted, and a tenth more: C libraries and processors choose their own ways.
struct Limits {
  double instructions;  // of a file
  double ratio;         // to those of what people would type instead
};
const std::map<std::string, Limits> kLimits = {
    {"name, size, path", {34800, 8.6}},
    {"path", {19050, 13.2}},
    {"count", {1720, 1.2}},
    {"a tenth by name, counted", {2580, 1.06}},
    {"a tenth by name, path", {4200, 1.72}},
    {"path, sorted by name", {33400, 8.2}},
};

TEST_F(Cost, OfAFileIsBoundedAndSoIsItsRatioToOtherPrograms) {
  constexpr int kFew = 1000, kMore = 3000;
  const bench::Tree few("cost-tests", kFew), more("cost-tests", kMore);
  const auto ofAFile = [&](const auto& in) { return counted(in(few.path()), in(more.path()), kMore - kFew); };
  for (const bench::Row& row : bench::rows()) {
    SCOPED_TRACE(row.what);
    const Limits& limits = kLimits.at(row.what);
    const double ours =
        ofAFile([&](const std::string& folder) { return bench::shotlightIn(SHOTLIGHT, row, folder); });
    const double theirs = ofAFile([&](const std::string& folder) { return bench::otherIn(row, folder); });
    EXPECT_GT(ours, 0);
    EXPECT_LE(ours, limits.instructions);
    ASSERT_GT(theirs, 0);
    EXPECT_LE(ours / theirs, limits.ratio) << row.otherName << " takes " << theirs;
  }
}

// Of a document whose text was read before.
TEST_F(Cost, OfAFileWhoseContentIsKeptIsBounded) {
  constexpr double kInstructions = 12500;
  constexpr int kFew = 1000, kMore = 3000;
  std::map<int, double> counts;
  for (const int files : {kFew, kMore}) {
    const bench::Tree cache("cost-tests", 1);
    ::setenv("XDG_CACHE_HOME", cache.path().c_str(), 1);
    const bench::Tree tree("cost-tests", files, [](int number, std::string& content) {
      content = "<p>The harbour, page " + std::to_string(number) + "</p>";
      return "html";
    });
    const Command command = {SHOTLIGHT, "find", "kMDItemTextContent == \"harbour\"c",
                             "--count", "--in", tree.path()};
    const bench::Usage first = bench::run(command);
    ASSERT_EQ(first.errors.find(std::to_string(files) + " results in "), 0u) << first.errors;
    const auto count = bench::instructionsOf(command);
    ASSERT_TRUE(count);
    counts[files] = static_cast<double>(*count);
  }
  EXPECT_LE((counts[kMore] - counts[kFew]) / (kMore - kFew), kInstructions);
}

// In whatever order 100,000 results are printed.
TEST_F(Cost, OfMemoryIsBounded) {
  constexpr int kFiles = 100000;
  constexpr double kMegabytes = 40;
  const bench::Tree tree("cost-tests", kFiles);
  for (const Command& order : {Command{}, Command{"--sort", "kMDItemFSName"}}) {
    SCOPED_TRACE(testing::PrintToString(order));
    Command command = {SHOTLIGHT, "find", "kMDItemFSName == \"*.txt\"", "--in", tree.path()};
    command.insert(command.end(), order.begin(), order.end());
    const bench::Usage usage = bench::run(command);
    EXPECT_EQ(usage.status, 0);
    EXPECT_EQ(usage.errors.find(std::to_string(kFiles) + " results in "), 0u) << usage.errors;
    EXPECT_GT(usage.megabytes, 1);
    EXPECT_LE(usage.megabytes, kMegabytes);
  }
}

// Of twice the results, a change costs as much.
TEST_F(Cost, OfALiveChangeIsThatOfTheChange) {
  double before = 0;
  for (const int results : {10000, 20000, 40000}) {
    const bench::Tree tree("cost-tests", results);
    const double each = counted({LIVE_CHANGE, tree.path(), "10"}, {LIVE_CHANGE, tree.path(), "60"}, 50);
    EXPECT_GT(each, 0);
    if (before > 0) {
      EXPECT_LE(each / before, 1.1) << results << " results";
    }
    before = each;
  }
}

}  // namespace
