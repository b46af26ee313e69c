#include "tests/standin/corefoundation/vectors/table.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

unsigned long hexNumber(const std::string& digits, size_t length) {
  if (digits.size() != length || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
    throw BadTable("\"" + digits + "\" isn't " + std::to_string(length) + " hex digits");
  }
  return std::strtoul(digits.c_str(), nullptr, 16);
}

}  // namespace

std::vector<Row> readTable(const std::string& path, const std::vector<std::string>& columns) {
  std::ifstream file(path);
  if (!file) throw BadTable(std::string("can't be read: ") + std::strerror(errno));
  std::string line;
  if (!std::getline(file, line)) throw BadTable("is empty: expected the line of column names");
  if (split(line, '\t') != columns) throw BadTable("line 1: expected the columns " + joined(columns));
  std::vector<Row> rows;
  for (int number = 2; std::getline(file, line); ++number) {
    Row row{number, split(line, '\t')};
    if (row.cells.size() != columns.size()) {
      throw BadTable("line " + std::to_string(number) + ": " + std::to_string(row.cells.size()) +
                     " cells instead of " + std::to_string(columns.size()));
    }
    rows.push_back(std::move(row));
  }
  if (rows.empty()) throw BadTable("has no rows");
  return rows;
}

std::vector<uint8_t> bytesOf(const std::string& cell) {
  std::vector<uint8_t> bytes;
  if (cell == "-") return bytes;
  for (size_t i = 0; i < cell.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(hexNumber(cell.substr(i, 2), 2)));
  }
  return bytes;
}

std::u16string unitsOf(const std::string& cell) {
  std::u16string units;
  if (cell == "-") return units;
  for (const std::string& unit : split(cell, ' ')) units += static_cast<char16_t>(hexNumber(unit, 4));
  return units;
}

std::u16string textOf(const std::string& cell) {
  if (cell.starts_with("t:")) return {cell.begin() + 2, cell.end()};
  if (cell.starts_with("u:")) return unitsOf(cell.substr(2));
  throw BadTable("\"" + cell + "\" is neither t: nor u: text");
}

long long integerOf(const std::string& cell) {
  char* end = nullptr;
  errno = 0;
  const long long value = std::strtoll(cell.c_str(), &end, 0);
  if (cell.empty() || *end != 0 || errno != 0) throw BadTable("\"" + cell + "\" isn't an integer");
  return value;
}

double realOf(const std::string& cell) {
  char* end = nullptr;
  const double value = std::strtod(cell.c_str(), &end);
  if (cell.empty() || *end != 0) throw BadTable("\"" + cell + "\" isn't a number");
  return value;
}

std::string hexOf(const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return "-";
  std::string text;
  char digits[3];
  for (const uint8_t byte : bytes) {
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

std::string hexOf(const std::u16string& units) {
  if (units.empty()) return "-";
  std::string text;
  char digits[5];
  for (const char16_t unit : units) {
    std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned>(unit));
    text += (text.empty() ? "" : " ") + std::string(digits);
  }
  return text;
}

CFStringRef makeText(const std::u16string& units) {
  const auto* const chars = reinterpret_cast<const UniChar*>(units.data());
  return CFStringCreateWithCharacters(kCFAllocatorDefault, chars, static_cast<CFIndex>(units.size()));
}

std::u16string unitsOf(CFStringRef string) {
  const CFIndex length = CFStringGetLength(string);
  std::u16string units(static_cast<size_t>(length), u'\0');
  CFStringGetCharacters(string, {0, length}, reinterpret_cast<UniChar*>(units.data()));
  return units;
}

std::string describe(CFStringRef string) {
  return string ? hexOf(unitsOf(string)) : "null";
}
