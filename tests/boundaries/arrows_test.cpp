// Includes between folders are those in the table, and form no circle.
#include "tests/boundaries/arrows.h"

#include <gtest/gtest.h>

namespace {

const std::vector<Include>& allIncludes() {
  static const auto includes = includesOf(SOURCES);
  return includes;
}

TEST(Arrows, BetweenFoldersAreThoseOfTheTable) {
  const auto arrows = arrowsOf(allIncludes());
  std::set<Arrow> rows = readArrows(ARROWS);
  for (const auto& [arrow, include] : arrows) {
    if (rows.erase(arrow)) continue;
    ADD_FAILURE() << "a new arrow, " << arrow.first << " -> " << arrow.second << ": " << include.file
                  << " includes " << include.included
                  << "\nDo without it, or give it a row in " ARROWS " if that closes no circle";
  }
  for (const Arrow& row : rows) {
    ADD_FAILURE() << "no include makes this arrow any more: " << row.first << " -> " << row.second
                  << "\nTake its row out of " ARROWS;
  }
}

TEST(Arrows, FormNoCircle) {
  EXPECT_EQ(circleIn(readArrows(ARROWS)), std::vector<std::string>());
}

TEST(ArrowsCheck, FindsACircle) {
  EXPECT_EQ(circleIn({{"a", "b"}, {"b", "c"}, {"b", "d"}, {"d", "e"}, {"e", "b"}}),
            (std::vector<std::string>{"b", "d", "e", "b"}));
  EXPECT_EQ(circleIn({{"a", "b"}, {"a", "c"}, {"b", "d"}, {"c", "d"}}), std::vector<std::string>());
}

TEST(ArrowsCheck, TakesAnIncludeWithinAFolderForNoArrow) {
  const auto arrows = arrowsOf({{"a/x.cpp", "a/x.h"}, {"a/x.cpp", "a/b/y.h"}, {"a/x.h", "platform/p/q/z.h"}});
  ASSERT_EQ(arrows.size(), 2U);
  EXPECT_EQ(arrows.begin()->first, Arrow("a", "a/b"));
  EXPECT_EQ(arrows.rbegin()->first, Arrow("a", "platform"));
}

// Each way of including that the project has.
TEST(ArrowsCheck, ReadsEveryFormOfAnInclude) {
  const auto has = [](const std::string& file, const std::string& included) {
    for (const Include& include : allIncludes()) {
      if (include.file == file && include.included == included) return true;
    }
    return false;
  };
  EXPECT_TRUE(has("tests/boundaries/arrows.cpp", "tests/boundaries/arrows.h"));  // from the project's root
  EXPECT_TRUE(has("host/main.cpp", "host/startup.h"));                           // from the file's own folder
  EXPECT_TRUE(has("bridge/dates.h", "host/owned.h"));
  EXPECT_TRUE(has("host/owned.h", "platform/CoreFoundation/CoreFoundation.h"));  // as a system's header
}

}  // namespace
