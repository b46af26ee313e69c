#include "standin/coreservices/search/time_watch.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "standin/coreservices/language/parser.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;

constexpr double kNow = 300000000;  // seconds since 2001: in July 2010

class MovingTimes : public testing::Test {
 protected:
  std::unique_ptr<TimeWatch> watch(std::u16string_view query) const {
    return TimeWatch::of(std::get<ExpressionRef>(parseQuery(query)), Date{kNow});
  }
  // A file that changed so many seconds from then.
  std::string file(const std::string& name, double seconds) const {
    const std::string path = scratch.file(name);
    const auto since1970 = std::chrono::duration<double>(seconds + kNow + kFrom1970To2001);
    fs::last_write_time(
        path, fs::file_time_type::clock::from_sys(std::chrono::sys_time<fs::file_time_type::duration>(
                  std::chrono::duration_cast<fs::file_time_type::duration>(since1970))));
    return path;
  }
  static double next(TimeWatch& watch, const std::string& path) {
    FileByPath file(path);
    watch.look(file.record());
    return watch.next() - kNow;
  }

  ScratchFolder scratch;
};

TEST_F(MovingTimes, AreNotWatchedWhereNothingIsRelativeToThem) {
  EXPECT_FALSE(watch(u"kMDItemFSName == \"a\" && kMDItemFSContentChangeDate > $time.iso(2011-03-05)"));
  EXPECT_TRUE(watch(u"kMDItemFSName == \"a\" || !(kMDItemFSContentChangeDate > $time.now)"));
}

TEST_F(MovingTimes, ComeWhenADateMeetsABoundThatMovesOn) {
  const std::string path = file("a.txt", -20);
  for (const char16_t* query :
       {u"kMDItemFSContentChangeDate > $time.now(-60)", u"kMDItemFSContentChangeDate <= $time.now(-60)",
        u"InRange(kMDItemFSContentChangeDate, $time.now(-60), $time.now(-10))",
        u"!(kMDItemFSContentChangeDate < $time.now(-60))",
        u"kMDItemFSContentChangeDate > $time.now(-10) || "
        u"kMDItemFSContentChangeDate > $time.now(-60)"}) {
    EXPECT_NEAR(next(*watch(query), path), 40, 0.01);
  }
}

TEST_F(MovingTimes, AreOfNoConcernToAFileForWhichTheRestDecides) {
  const std::string path = file("a.txt", -20);
  EXPECT_EQ(next(*watch(u"kMDItemFSContentChangeDate > $time.now(-60) && kMDItemFSName == \"*.jpg\""), path),
            TimeWatch::kNever);
  EXPECT_EQ(next(*watch(u"kMDItemFSContentChangeDate > $time.now(-60) || kMDItemFSName == \"*.txt\""), path),
            TimeWatch::kNever);
  EXPECT_EQ(next(*watch(u"kMDItemFSContentChangeDate > $time.now(-10)"), path), TimeWatch::kNever);
  EXPECT_EQ(next(*watch(u"kMDItemDueDate > $time.now(-10)"), path), TimeWatch::kNever);
}

TEST_F(MovingTimes, KeepOneMomentForAFile) {
  const auto watched = watch(u"kMDItemFSContentChangeDate > $time.now(-60)");
  next(*watched, file("a.txt", -20));
  EXPECT_NEAR(next(*watched, file("a.txt", 0)), 60, 0.01);
  watched->turnTo(Date{kNow + 61});
  EXPECT_EQ(watched->takeDue(), Texts{scratch.at("a.txt")});
  EXPECT_EQ(watched->takeDue(), Texts{});
  EXPECT_EQ(watched->next(), TimeWatch::kNever);
}

TEST_F(MovingTimes, MoreThanAnHourAheadAreThoseOfAllFiles) {
  const auto watched = watch(u"kMDItemFSContentChangeDate > $time.now(-7200)");
  EXPECT_NEAR(next(*watched, file("a.txt", 0)), 7200, 0.01);
  EXPECT_FALSE(watched->takeWhole());
  watched->turnTo(Date{kNow + 7201});
  EXPECT_EQ(watched->takeDue(), Texts{});
  EXPECT_TRUE(watched->takeWhole());
  EXPECT_FALSE(watched->takeWhole());
}

TEST_F(MovingTimes, InDaysMoveOnAtMidnight) {
  const auto watched = watch(u"kMDItemFSContentChangeDate >= $time.this_week");
  EXPECT_GT(watched->next(), kNow);
  EXPECT_LE(watched->next(), kNow + 90000);
  watched->turnTo(Date{watched->next()});
  EXPECT_TRUE(watched->takeWhole());
}

}  // namespace
}  // namespace standin::metadata
