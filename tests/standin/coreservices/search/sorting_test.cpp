#include "standin/coreservices/search/sorting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace standin::metadata {
namespace {

class Sorting : public testing::Test {
 protected:
  bool before(const Value& left, const Value& right) const {
    const Rank first = ranker.rankOf(left);
    const Rank second = ranker.rankOf(right);
    EXPECT_FALSE(first < second && second < first);
    return first < second;
  }
  static Value text(std::string_view bytes) { return bytes; }

  const Ranker ranker;
};

// Neighbours that a double can't tell apart.
TEST_F(Sorting, ComparesLargeIntegersExactly) {
  for (const int64_t number : {int64_t{1} << 53, int64_t{1} << 60, std::numeric_limits<int64_t>::max() - 1}) {
    EXPECT_TRUE(before(number, number + 1)) << number;
    EXPECT_FALSE(before(number + 1, number)) << number;
    EXPECT_TRUE(before(-number - 1, -number)) << number;
    EXPECT_FALSE(before(number, number)) << number;
  }
}

TEST_F(Sorting, ComparesIntegersWithOtherNumbersByValue) {
  EXPECT_TRUE(before(int64_t{1}, 1.5));
  EXPECT_TRUE(before(1.5, int64_t{2}));
  EXPECT_FALSE(before(int64_t{2}, 2.0));
  EXPECT_FALSE(before(2.0, int64_t{2}));
  const int64_t odd = (int64_t{1} << 53) + 1;
  EXPECT_TRUE(before(std::ldexp(1.0, 53), odd));
  EXPECT_TRUE(before(Date{1}, Date{2}));
}

TEST_F(Sorting, PutsWhatIsNoNumberBeforeAllNumbers) {
  const double none = std::nan("");
  EXPECT_TRUE(before(none, -1e300));
  EXPECT_FALSE(before(-1e300, none));
  EXPECT_FALSE(before(none, none));
}

TEST_F(Sorting, ComparesTextNonliterally) {
  EXPECT_FALSE(before(text("\u00E9tude"), text("e\u0301tude")));
  EXPECT_FALSE(before(text("e\u0301tude"), text("\u00E9tude")));
  EXPECT_FALSE(before(text("q\u0323\u0307"), text("q\u0307\u0323")));
  EXPECT_FALSE(before(text("q\u0307\u0323"), text("q\u0323\u0307")));
}

TEST_F(Sorting, ComparesNumbersInTextByTheirValue) {
  EXPECT_TRUE(before(text("file 9"), text("file 10")));
  EXPECT_TRUE(before(text("1.9"), text("1.10")));
  EXPECT_TRUE(before(text("a2b1"), text("a2b10")));
}

TEST_F(Sorting, ComparesTextThatIsLong) {
  const std::string shared(5000, 'x');
  EXPECT_TRUE(before(text(shared + "a"), text(shared + "b")));
  EXPECT_FALSE(before(text(shared + "b"), text(shared + "a")));
}

TEST_F(Sorting, PutsMissingValuesFirst) {
  for (const Value& value : {Value(false), Value(std::numeric_limits<int64_t>::min()), text("")}) {
    EXPECT_LT(Rank(), ranker.rankOf(value));
  }
}

TEST(Ranks, AreComparedKeyByKeyEachInItsDirection) {
  Ranks ranks(2);
  const auto set = [&](ResultStore::File file, long double first, long double second) {
    ranks.set(file, 0, Rank(first));
    ranks.set(file, 1, Rank(second));
  };
  set(0, 1, 5);
  set(1, 1, 7);
  set(2, 2, 6);
  EXPECT_TRUE(ranks.before(0, 1, {{0, false}, {1, false}}));
  EXPECT_TRUE(ranks.before(1, 0, {{0, false}, {1, true}}));
  EXPECT_TRUE(ranks.before(2, 1, {{1, false}, {0, false}}));
  EXPECT_TRUE(ranks.before(2, 0, {{0, true}}));
  EXPECT_FALSE(ranks.before(0, 1, {{0, false}}));
  EXPECT_FALSE(ranks.before(1, 0, {{0, false}}));
  EXPECT_FALSE(ranks.before(0, 2, {}));
}

}  // namespace
}  // namespace standin::metadata
