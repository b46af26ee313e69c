// Dates through the bridge, as Core Foundation was observed to compute them.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/bridge/fixture.h"

namespace {

class Dates : public BridgeTest {};

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

}  // namespace
