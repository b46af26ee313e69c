#include <CoreFoundation/CFDate.h>

#include <cmath>
#include <cstdio>

#include "tests/standin/corefoundation/vectors/checks.h"

namespace {

std::string shown(double value) {
  if (std::isnan(value)) return "nan";
  char text[40];
  std::snprintf(text, sizeof text, "%a", value);
  return text;
}

SInt8 smallOf(const std::string& cell) {
  const long long value = integerOf(cell);
  if (value < -128 || value > 127) throw BadTable("\"" + cell + "\" doesn't fit into 8 bits");
  return static_cast<SInt8>(value);
}

std::string toAbsolute(const Row& row) {
  CFGregorianDate date{};
  date.year = static_cast<SInt32>(integerOf(row.cells[0]));
  date.month = smallOf(row.cells[1]);
  date.day = smallOf(row.cells[2]);
  date.hour = smallOf(row.cells[3]);
  date.minute = smallOf(row.cells[4]);
  date.second = realOf(row.cells[5]);
  return difference("absolute", shown(CFGregorianDateGetAbsoluteTime(date, nullptr)),
                    shown(realOf(row.cells[6])));
}

std::string fromAbsolute(const Row& row) {
  const CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(realOf(row.cells[0]), nullptr);
  return difference("year", std::to_string(date.year), row.cells[1]) +
         difference("month", std::to_string(date.month), row.cells[2]) +
         difference("day", std::to_string(date.day), row.cells[3]) +
         difference("hour", std::to_string(date.hour), row.cells[4]) +
         difference("minute", std::to_string(date.minute), row.cells[5]) +
         difference("second", shown(date.second), shown(realOf(row.cells[6])));
}

}  // namespace

std::vector<Check> dateChecks() {
  return {
      {"date_to_absolute.tsv",
       {"year", "month", "day", "hour", "minute", "second", "absolute_hex"},
       toAbsolute},
      {"date_from_absolute.tsv",
       {"absolute_hex", "year", "month", "day", "hour", "minute", "second"},
       fromAbsolute},
  };
}
