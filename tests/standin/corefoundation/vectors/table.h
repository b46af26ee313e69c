// Reads the files of observed results.
#pragma once

#include <CoreFoundation/CFString.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

// A file that isn't there, or isn't of the form that it should have.
class BadTable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Row {
  int line;
  std::vector<std::string> cells;
};

// All rows of a file whose first line must name exactly these columns. Throws BadTable.
std::vector<Row> readTable(const std::string& path, const std::vector<std::string>& columns);

// Cells. All throw BadTable for text that isn't of the form.
std::vector<uint8_t> bytesOf(const std::string& cell);  // "-" or hex digits
std::u16string unitsOf(const std::string& cell);        // "-" or hex units
std::u16string textOf(const std::string& cell);         // "t:ASCII" or "u:units"
long long integerOf(const std::string& cell);           // decimal, or hex after 0x
double realOf(const std::string& cell);

// The other way, for messages.
std::string hexOf(const std::vector<uint8_t>& bytes);
std::string hexOf(const std::u16string& units);

// Core Foundation strings; the maker's result is the caller's.
CFStringRef makeText(const std::u16string& units);
std::u16string unitsOf(CFStringRef string);
// "null" or the units.
std::string describe(CFStringRef string);
