// What commands cost, in instructions: of those alone a limit holds on every machine.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bench/instructions.h"
#include "bench/tree.h"
#include "tests/support/tier.h"

namespace {

using Command = std::vector<std::string>;

class Cost : public testing::Test {
 protected:
  void SetUp() override {
    if (!isLongTier()) GTEST_SKIP() << "counted in the long tier only";
  }
};

double counted(const Command& less, const Command& more, double howManyMore) {
  const auto each = bench::instructionsEach(less, more, howManyMore);
  if (each) return *each;
  ADD_FAILURE() << "nothing was counted: valgrind and libc6-dbg:i386 must be installed, and " << less.front()
                << " must not fail";
  return 0;
}

double ofAFile(Command options) {
  constexpr int kFew = 1000, kMore = 3000;
  const bench::Tree few("cost-tests", kFew), more("cost-tests", kMore);
  options.insert(options.begin(), {SHOTLIGHT, "find", "kMDItemFSName == \"*\""});
  const auto in = [&options](const bench::Tree& tree) {
    Command command = options;
    command.insert(command.end(), {"--in", tree.path()});
    return command;
  };
  return counted(in(few), in(more), kMore - kFew);
}

// The limits are what was counted, and a tenth more: C libraries and processors choose their own ways.
TEST_F(Cost, OfAFileIsBounded) {
  const struct {
    Command options;
    double limit;
  } cases[] = {
      {{}, 35000},  // name, size and path
      {{"--show", "kMDItemPath"}, 19300},
      {{"--count"}, 2110},
      {{"--show", "kMDItemPath", "--sort", "kMDItemFSName"}, 33600},
  };
  for (const auto& [options, limit] : cases) {
    SCOPED_TRACE(testing::PrintToString(options));
    const double each = ofAFile(options);
    EXPECT_GT(each, 0);
    EXPECT_LE(each, limit);
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
