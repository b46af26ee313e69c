#include "standin/coreservices/language/time_values.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include "standin/coreservices/language/parser.h"
#include "tests/standin/coreservices/metadata/fixture.h"
#include "tests/support/local_zone.h"

namespace standin::metadata {
namespace {

constexpr double kStartOf2001 = 978307200;
constexpr double kNow = 321021296.25;  // Saturday, 2011-03-05 12:34:56.25 GMT

constexpr const char* kGreenwich = "GMT0";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kTokyo = "JST-9";
constexpr const char* kMidnightChanges = "BRT3BRST,M11.1.0/0,M2.3.0/0";  // forward and back at midnight

std::string inGreenwich(double seconds) {
  const auto time = static_cast<time_t>(seconds + kStartOf2001);
  struct tm fields {};
  char text[64];
  ::gmtime_r(&time, &fields);
  ::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
  return text;
}

std::string shown(const Period& period) {
  const std::string start = inGreenwich(period.start);
  return period.start == period.end ? start : start + " to " + inGreenwich(period.end);
}

TimeValue read(std::u16string_view text) {
  size_t position = 0;
  TimeValue time = readTime(text, position);
  if (position != text.size()) throw ParseError{position, "not read to the end"};
  return time;
}

Period periodOf(std::u16string_view text, double now = kNow) {
  const TimeValue time = read(text);
  const auto* const relative = std::get_if<RelativeTime>(&time);
  return relative ? resolve(*relative, Date{now}) : std::get<Period>(time);
}

struct Row {
  const char16_t* text;
  const char* period;
};

void check(std::initializer_list<Row> rows, double now = kNow) {
  for (const Row& row : rows) {
    const std::u16string text = row.text;
    EXPECT_EQ(shown(periodOf(text, now)), row.period) << std::string(text.begin(), text.end());
  }
}

TEST(NamedTimes, ArePeriodsOfTheCalendar) {
  const LocalZone zone(kGreenwich);
  check({{u"$time.today", "2011-03-05 00:00:00 to 2011-03-06 00:00:00"},
         {u"$time.yesterday", "2011-03-04 00:00:00 to 2011-03-05 00:00:00"},
         {u"$time.this_week", "2011-02-28 00:00:00 to 2011-03-07 00:00:00"},
         {u"$time.this_month", "2011-03-01 00:00:00 to 2011-04-01 00:00:00"},
         {u"$time.this_year", "2011-01-01 00:00:00 to 2012-01-01 00:00:00"}});
}

TEST(NamedTimes, AreCountedOnAndBackInTheirUnit) {
  const LocalZone zone(kGreenwich);
  check({{u"$time.today(0)", "2011-03-05 00:00:00 to 2011-03-06 00:00:00"},
         {u"$time.today(-5)", "2011-02-28 00:00:00 to 2011-03-01 00:00:00"},
         {u"$time.today(+1)", "2011-03-06 00:00:00 to 2011-03-07 00:00:00"},
         {u"$time.yesterday(-1)", "2011-03-03 00:00:00 to 2011-03-04 00:00:00"},
         {u"$time.yesterday(1)", "2011-03-05 00:00:00 to 2011-03-06 00:00:00"},
         {u"$time.this_week(-1)", "2011-02-21 00:00:00 to 2011-02-28 00:00:00"},
         {u"$time.this_month( -3 )", "2010-12-01 00:00:00 to 2011-01-01 00:00:00"},
         {u"$time.this_month(10)", "2012-01-01 00:00:00 to 2012-02-01 00:00:00"},
         {u"$time.this_year (-11)", "2000-01-01 00:00:00 to 2001-01-01 00:00:00"}});
}

TEST(Now, IsAnInstantCountedInSeconds) {
  EXPECT_EQ(periodOf(u"$time.now").start, kNow);
  EXPECT_EQ(periodOf(u"$time.now").end, kNow);
  EXPECT_EQ(periodOf(u"$time.now(-3600)").start, kNow - 3600);
  EXPECT_EQ(periodOf(u"$time.now(7)").start, kNow + 7);
}

TEST(Weeks, StartOnMonday) {
  const LocalZone zone(kGreenwich);
  constexpr double kDay = 86400;
  const char* const week = "2011-02-28 00:00:00 to 2011-03-07 00:00:00";
  for (const int day : {-5, -4, -1, 0, 1}) check({{u"$time.this_week", week}}, kNow + day * kDay);
  check({{u"$time.this_week", "2011-02-21 00:00:00 to 2011-02-28 00:00:00"}}, kNow - 6 * kDay);
  check({{u"$time.this_week", "2011-03-07 00:00:00 to 2011-03-14 00:00:00"}}, kNow + 2 * kDay);
}

TEST(Days, AreThoseOfTheLocalZone) {
  const LocalZone zone(kTokyo);
  check({{u"$time.today", "2011-03-04 15:00:00 to 2011-03-05 15:00:00"},
         {u"$time.this_year", "2010-12-31 15:00:00 to 2011-12-31 15:00:00"}});
  constexpr double kThreeHours = 10800;
  check({{u"$time.today", "2011-03-05 15:00:00 to 2011-03-06 15:00:00"}}, kNow + kThreeHours);
}

TEST(Days, AreAnHourShorterOrLongerWhenClocksChange) {
  const LocalZone zone(kNewYork);
  check({{u"$time.today(8)", "2011-03-13 05:00:00 to 2011-03-14 04:00:00"},
         {u"$time.iso(2011-11-06)", "2011-11-06 04:00:00 to 2011-11-07 05:00:00"},
         {u"$time.iso(2011-11-05)", "2011-11-05 04:00:00 to 2011-11-06 04:00:00"},
         {u"$time.this_month", "2011-03-01 05:00:00 to 2011-04-01 04:00:00"}});
}

TEST(Days, StartAtTheChangeWhereItSkipsMidnight) {
  const LocalZone zone(kMidnightChanges);
  check({{u"$time.iso(2011-11-05)", "2011-11-05 03:00:00 to 2011-11-06 03:00:00"},
         {u"$time.iso(2011-11-06)", "2011-11-06 03:00:00 to 2011-11-07 02:00:00"},
         {u"$time.iso(2011-02-19)", "2011-02-19 02:00:00 to 2011-02-20 03:00:00"}});
}

TEST(IsoDates, TakeClocksFractionsAndZones) {
  const LocalZone zone(kNewYork);
  check({{u"$time.iso(2011-03-05T12:00:00Z)", "2011-03-05 12:00:00"},
         {u"$time.iso( 2011-03-05T12:00Z )", "2011-03-05 12:00:00"},
         {u"$time.iso(2011-03-05T12:00:00+01:00)", "2011-03-05 11:00:00"},
         {u"$time.iso(2011-03-05T12:00:00-0530)", "2011-03-05 17:30:00"},
         {u"$time.iso(2011-03-05T12:00:00+09)", "2011-03-05 03:00:00"},
         {u"$time.iso(2011-03-05T12:00:00)", "2011-03-05 17:00:00"},
         {u"$time.iso(2011-07-05T12:00)", "2011-07-05 16:00:00"},
         {u"$time.iso(2012-02-29)", "2012-02-29 05:00:00 to 2012-03-01 05:00:00"},
         {u"$time.iso(2016-12-31T23:59:60Z)", "2017-01-01 00:00:00"},
         {u"$time.iso(1904-01-01T00:00:00Z)", "1904-01-01 00:00:00"},
         {u"$time.iso(9999-12-31T00:00:00Z)", "9999-12-31 00:00:00"}});
  EXPECT_EQ(periodOf(u"$time.iso(2011-03-05T12:00:00.25Z)").start, 321019200.25);
  EXPECT_EQ(periodOf(u"$time.iso(2011-03-05T12:00:00,5+00:00)").start, 321019200.5);
}

TEST(IsoDates, InHoursThatClocksShowTwiceOrNeverCountAsBeforeTheChange) {
  const LocalZone zone(kNewYork);
  check({{u"$time.iso(2011-11-06T01:30)", "2011-11-06 05:30:00"},
         {u"$time.iso(2011-11-06T02:00)", "2011-11-06 07:00:00"},
         {u"$time.iso(2011-03-13T02:30)", "2011-03-13 07:30:00"},
         {u"$time.iso(2011-03-13T03:00)", "2011-03-13 07:00:00"}});
}

TEST(Distances, ReachTenThousandYears) {
  const LocalZone zone(kGreenwich);
  check({{u"$time.this_year(7000)", "9011-01-01 00:00:00 to 9012-01-01 00:00:00"},
         {u"$time.this_month(-12000)", "1011-03-01 00:00:00 to 1011-04-01 00:00:00"}});
  for (const auto* text :
       {u"$time.now(-315360000000)", u"$time.today(3650000)", u"$time.yesterday(-3650000)",
        u"$time.this_week(520000)", u"$time.this_month(-120000)", u"$time.this_year(10000)"}) {
    EXPECT_NO_THROW(periodOf(text));
  }
}

TEST(Times, AreRefusedWithThePlaceAndTheReasonWhenMalformed) {
  const struct {
    const char16_t* text;
    size_t position;
    const char* reason;
  } kRows[] = {
      {u"$", 0, "expected $time"},
      {u"$tim.now", 0, "expected $time"},
      {u"$time", 5, "expected ."},
      {u"$time(1)", 5, "expected ."},
      {u"$time.", 6, "expected now, today"},
      {u"$time.tomorrow", 6, "expected now, today"},
      {u"$time.Today", 6, "expected now, today"},
      {u"$time.today2", 6, "expected now, today"},
      {u"$time.today(", 12, "whole number"},
      {u"$time.today()", 12, "whole number"},
      {u"$time.today(-)", 13, "whole number"},
      {u"$time.today(x)", 12, "whole number"},
      {u"$time.today(1.5)", 13, "expected )"},
      {u"$time.today(1", 11, "never closed"},
      {u"$time.now(315360000001)", 10, "10,000 years"},
      {u"$time.now(-99999999999999999999)", 10, "10,000 years"},
      {u"$time.today(3650001)", 12, "10,000 years"},
      {u"$time.this_week(520001)", 16, "10,000 years"},
      {u"$time.this_month(-120001)", 17, "10,000 years"},
      {u"$time.this_year( 10001)", 17, "10,000 years"},
      {u"$time.iso", 9, "expected ( and a date"},
      {u"$time.iso()", 10, "year"},
      {u"$time.iso(", 10, "year"},
      {u"$time.iso(11-03-05)", 12, "year"},
      {u"$time.iso(2011)", 14, "month"},
      {u"$time.iso(2011-13-05)", 15, "month"},
      {u"$time.iso(2011-3-05)", 16, "month"},
      {u"$time.iso(2011-03)", 17, "day"},
      {u"$time.iso(2011-03-00)", 18, "day"},
      {u"$time.iso(2011-02-29)", 18, "no such day"},
      {u"$time.iso(2011-03-05 12:00)", 21, "expected )"},
      {u"$time.iso(2011-03-05Z)", 20, "expected )"},
      {u"$time.iso(2011-03-05T24:00)", 21, "hour"},
      {u"$time.iso(2011-03-05T12)", 23, "minutes"},
      {u"$time.iso(2011-03-05T12:60)", 24, "minutes"},
      {u"$time.iso(2011-03-05T12:00:61)", 27, "seconds"},
      {u"$time.iso(2011-03-05T12:00:00.)", 30, "digits"},
      {u"$time.iso(2011-03-05T12:00:00X)", 29, "expected )"},
      {u"$time.iso(2011-03-05T12:00:00+1)", 31, "time zone"},
      {u"$time.iso(2011-03-05T12:00:00+01:)", 33, "time zone"},
      {u"$time.iso(2011-03-05T12:00:00Z", 9, "never closed"},
  };
  for (const auto& row : kRows) {
    const std::u16string text = row.text;
    const std::string name(text.begin(), text.end());
    try {
      read(text);
      ADD_FAILURE() << name << " was taken";
    } catch (const ParseError& error) {
      EXPECT_EQ(error.position, row.position) << name << ": " << error.reason;
      EXPECT_PRED_FORMAT2(testing::IsSubstring, row.reason, error.reason) << name;
    }
  }
}

std::string readAlone(std::u16string_view text, const char* zoneName) {
  const LocalZone zone(zoneName);
  return shown(readDate(text));
}

TEST(DatesAlone, LastAsLongAsWhatTheyName) {
  EXPECT_EQ(readAlone(u"2011-03-05", kGreenwich), "2011-03-05 00:00:00 to 2011-03-06 00:00:00");
  EXPECT_EQ(readAlone(u"2011-03-05", kTokyo), "2011-03-04 15:00:00 to 2011-03-05 15:00:00");
  EXPECT_EQ(readAlone(u"2011-03-05T06:42:10Z", kTokyo), "2011-03-05 06:42:10 to 2011-03-05 06:42:11");
  EXPECT_EQ(readAlone(u"1969-03-05T06:42:10Z", kTokyo), "1969-03-05 06:42:10 to 1969-03-05 06:42:11");
  EXPECT_EQ(readAlone(u"2011-03-05T06:42:10", kTokyo), "2011-03-04 21:42:10 to 2011-03-04 21:42:11");
  EXPECT_EQ(readAlone(u"2011-03-05T06:42+01:00", kTokyo), "2011-03-05 05:42:00 to 2011-03-05 05:43:00");
  EXPECT_EQ(readAlone(u"2011-03-05T06:42:10.25Z", kTokyo), "2011-03-05 06:42:10");
  EXPECT_EQ(readDate(u"2011-03-05T06:42:10.25Z").start, readDate(u"2011-03-05T06:42:10Z").start + 0.25);
  for (const auto* text :
       {u"", u"2011", u"2011-03", u"2011-03-05T", u"2011-03-05 ", u" 2011-03-05", u"2011-03-05T06:42Zx"})
    EXPECT_THROW(readDate(text), ParseError);
}

class TimesInQueries : public MetadataTest {
 protected:
  static timespec clock() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
  }

  void changedAt(const char* name, timespec time) const {
    const timespec times[] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, scratch.file(name).c_str(), times, 0), 0);
  }
};

TEST_F(TimesInQueries, FindFilesByTheTimeOfTheirChange) {
  changedAt("new", clock());
  changedAt("old", {.tv_sec = 1299326400, .tv_nsec = 0});  // 2011-03-05 12:00:00 GMT
  const std::pair<const char*, CFIndex> kRows[] = {
      {"kMDItemFSContentChangeDate >= $time.now(-3600)", 1},
      {"kMDItemFSContentChangeDate < $time.yesterday", 1},
      {"kMDItemFSContentChangeDate == $time.iso(2011-03-05T12:00:00Z)", 1},
      {"kMDItemFSContentChangeDate == \"$time.iso(2011-03-05T13:00:00+01:00)\"", 1},
      {"InRange(kMDItemFSContentChangeDate, $time.iso(2011-01-01), '$time.this_year(1)')", 2},
      {"kMDItemFSContentChangeDate > $time.today(1)", 0},
  };
  for (const auto& [text, count] : kRows) {
    const auto query = makeQuery(text);
    ASSERT_TRUE(query) << text;
    ASSERT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
    EXPECT_EQ(MDQueryGetResultCount(query.get()), count) << text;
  }
}

TEST_F(TimesInQueries, MakeNoQueryWhenMalformed) {
  const auto parent = makeQuery("kMDItemFSSize > 1");
  for (const char* text : {"kMDItemFSSize == $time.tomorrow", "kMDItemFSSize < $time.iso(2011-02-30)",
                           "kMDItemFSSize > \"$time.today(x)\""}) {
    EXPECT_FALSE(makeQuery(text)) << text;
    EXPECT_FALSE(makeSubset(parent, text));
  }
}

TEST_F(TimesInQueries, AreFixedWhenTheQueryStartsAndNotWhenItIsMade) {
  const auto query = makeQuery("kMDItemFSContentChangeDate < $time.now");
  const timespec made = clock();
  changedAt("file", made);
  for (timespec now = made; now.tv_sec == made.tv_sec && now.tv_nsec < made.tv_nsec + 1000000;) now = clock();
  ASSERT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
}

}  // namespace
}  // namespace standin::metadata
