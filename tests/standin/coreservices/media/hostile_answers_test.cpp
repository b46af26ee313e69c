// Tags and kept values that no reader should tell: found by fuzz/exiftool_answers.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "standin/coreservices/media/media_attributes.h"
#include "standin/coreservices/media/media_table.h"

namespace standin::metadata {
namespace {

double keptDate(double seconds) {
  const std::string kept = encodeAttributes({{FileAttribute::ContentCreationDate, ClockTime{seconds}}});
  std::vector<Value> values;
  decodeValues(kept, FileAttribute::ContentCreationDate, values);
  return values.size() == 1 ? std::get<Date>(values[0]).seconds : 0;
}

TEST(KeptClockTimes, BeyondAllDatesStayAsTheyAre) {
  EXPECT_EQ(keptDate(1e300), 1e300);
  EXPECT_EQ(keptDate(-1e18), -1e18);
  EXPECT_TRUE(std::isnan(keptDate(std::numeric_limits<double>::quiet_NaN())));
}

std::vector<OwnedValue> pixelCounts(const char* size) {
  std::vector<OwnedValue> counts;
  for (const auto& [attribute, value] : attributesOf({{"Composite:ImageSize", {size}}})) {
    if (attribute == FileAttribute::PixelCount) counts.push_back(value);
  }
  return counts;
}

TEST(PixelCounts, AreThoseThatFitInANumber) {
  EXPECT_EQ(pixelCounts("640 480"), std::vector<OwnedValue>{int64_t{307200}});
  EXPECT_EQ(pixelCounts("4294967296 4294967296"), std::vector<OwnedValue>{});
}

}  // namespace
}  // namespace standin::metadata
