// Dates through the bridge, as Core Foundation was observed to compute them.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/plugin/bridge/fixture.h"
#include "tests/support/local_zone.h"

namespace {

class Dates : public BridgeTest {};

// The properties that the plug-in read or set, in order.
std::vector<std::string> touched;

bool getProperty(void* object, const char* name, int32_t* value) {
  touched.push_back(name);
  typedef bool Get(void* object, const char* name, int32_t* value);
  return reinterpret_cast<Get*>(host::resolve("REALGetPropValueInt"))(object, name, value);
}
bool setProperty(void* object, const char* name, int32_t value) {
  touched.push_back(name);
  typedef bool Set(void* object, const char* name, int32_t value);
  return reinterpret_cast<Set*>(host::resolve("REALSetPropValueInt"))(object, name, value);
}
void* listening(const char* name) {
  const std::string wanted = name;
  if (wanted == "REALGetPropValueInt") return reinterpret_cast<void*>(getProperty);
  if (wanted == "REALSetPropValueInt") return reinterpret_cast<void*>(setProperty);
  return host::resolve(name);
}

std::vector<std::vector<std::string>> rowsOf(const std::string& name) {
  std::ifstream file(std::string(VECTORS) + "/" + name);
  std::vector<std::vector<std::string>> rows;
  std::string line;
  std::getline(file, line);  // the header
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    rows.emplace_back();
    for (std::string field; std::getline(fields, field, '\t');) rows.back().push_back(field);
  }
  return rows;
}

int whole(const std::string& text) {
  return static_cast<int>(std::strtod(text.c_str(), nullptr));
}

bool isWhole(const std::string& text) {
  const double value = std::strtod(text.c_str(), nullptr);
  return std::isfinite(value) && value == std::trunc(value);
}

TEST_F(Dates, OfHostCodeAreTheObservedTimes) {
  start();
  int checked = 0;
  for (const auto& row : rowsOf("date_to_absolute.tsv")) {
    ASSERT_EQ(7u, row.size());
    if (!isWhole(row[5])) continue;  // a host date has no fractions
    const CFOwner date = toDate(
        host::date(whole(row[0]), whole(row[1]), whole(row[2]), whole(row[3]), whole(row[4]), whole(row[5])));
    EXPECT_EQ(std::strtod(row[6].c_str(), nullptr), CFDateGetAbsoluteTime(static_cast<CFDateRef>(date.get())))
        << testing::PrintToString(row);
    ++checked;
  }
  EXPECT_GT(checked, 50);
}

TEST_F(Dates, OfThePlatformHaveTheObservedFields) {
  start();
  int checked = 0;
  for (const auto& row : rowsOf("date_from_absolute.tsv")) {
    ASSERT_EQ(7u, row.size());
    const CFOwner date = own(CFDateCreate(nullptr, std::strtod(row[0].c_str(), nullptr)));
    EXPECT_EQ((host::DateFields{whole(row[1]), whole(row[2]), whole(row[3]), whole(row[4]), whole(row[5]),
                                whole(row[6])}),
              host::fields(toVariant(date.get())))
        << testing::PrintToString(row);
    ++checked;
  }
  EXPECT_GT(checked, 50);
}

TEST_F(Dates, AreInGMTWhateverTheLocalTimeZone) {
  start();
  for (const char* zone : {"JST-9", "EST5EDT", "UTC0"}) {
    const LocalZone local(zone);
    const CFOwner reference = toDate(host::date(2001, 1, 1));
    EXPECT_EQ(0.0, CFDateGetAbsoluteTime(static_cast<CFDateRef>(reference.get()))) << zone;
    EXPECT_EQ((host::DateFields{2001, 1, 1, 0, 0, 0}),
              host::fields(toVariant(own(CFDateCreate(nullptr, 0.5)).get())))
        << zone;
  }
}

TEST_F(Dates, AreReadAndSetFieldByField) {
  startWith(listening);
  const std::vector<std::string> all = {"Year", "Month", "Day", "Hour", "Minute", "Second"};
  touched.clear();
  const CFOwner date = toDate(host::date(2001, 1, 1));
  EXPECT_EQ(all, touched);
  touched.clear();
  toVariant(date.get());
  EXPECT_EQ(all, touched);
}

TEST_F(Dates, ThatHaveNoSecondAreNullThoughTheOtherFieldsWereRead) {
  host::Settings settings;
  settings.unreadableProperties = {"Second"};
  startWith(listening, settings);
  touched.clear();
  EXPECT_EQ(nullptr, toDate(host::date(2001, 1, 1)));
  EXPECT_EQ(6u, touched.size());
}

TEST_F(Dates, AreNotReadBeyondAFieldThatTheyLack) {
  host::Settings settings;
  settings.unreadableProperties = {"Day"};
  startWith(listening, settings);
  touched.clear();
  EXPECT_EQ(nullptr, toDate(host::date(2001, 1, 1)));
  EXPECT_EQ((std::vector<std::string>{"Year", "Month", "Day"}), touched);
}

// Cut to signed bytes.
TEST_F(Dates, OfFieldsBeyondAByteAreCut) {
  start();
  const CFOwner cut = toDate(host::date(2001, 257, 256 + 2, 256 + 3, 256 + 4, 5));
  const CFOwner same = toDate(host::date(2001, 1, 2, 3, 4, 5));
  EXPECT_TRUE(CFEqual(cut.get(), same.get()));
}

TEST_F(Dates, OfAHostThatReadsNoPropertiesAreNull) {
  host::Settings settings;
  settings.hidden = {"REALGetPropValueInt"};
  start(settings);
  EXPECT_EQ(nullptr, toDate(host::date(2001, 1, 1)));
}

}  // namespace
