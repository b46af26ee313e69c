#include "bench/calls/table.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace bench::calls {
namespace {

constexpr char kHeading[] = "| call | stubs | plug-in | twin | ratio | dylib | its twin | ratio |";
constexpr char kRule[] = "|---|---|---|---|---|---|---|---|";

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char line[200];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

typedef std::vector<std::string> Lines;

Lines linesOf(const std::string& document) {
  Lines lines;
  std::ifstream stream(document);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Where the table begins, and the line after its last one; both the end when there is none.
std::pair<size_t, size_t> tableIn(const Lines& lines) {
  size_t begin = 0;
  while (begin < lines.size() && lines[begin] != kHeading) ++begin;
  size_t end = begin;
  while (end < lines.size() && lines[end].starts_with('|')) ++end;
  return {begin, end};
}

Row rowOf(const std::string& line) {
  Row row;
  double ratio, dylibRatio;
  char what[100];
  if (std::sscanf(line.c_str(), "| %99[^|]| %d | %d | %d | %lf | %d | %d | %lf |", what, &row.stubs,
                  &row.plugin, &row.twin, &ratio, &row.dylib, &row.dylibTwin, &dylibRatio) != 8) {
    return {};
  }
  row.what = what;
  row.what.erase(row.what.find_last_not_of(' ') + 1);
  return row;
}

}  // namespace

const char kDocument[] = DOCUMENT;

std::string asText(const std::vector<Row>& rows) {
  std::string text = formatted("%-38s %6s %8s %6s %6s %6s %9s %6s\n", "call", "stubs", "plug-in", "twin",
                               "ratio", "dylib", "its twin", "ratio");
  for (const Row& row : rows) {
    text += formatted("%-38s %6d %8d %6d %6.2f %6d %9d %6.2f\n", row.what.c_str(), row.stubs, row.plugin,
                      row.twin, row.ratio(), row.dylib, row.dylibTwin, row.dylibRatio());
  }
  return text;
}

std::string asMarkdown(const std::vector<Row>& rows) {
  std::string text = std::string(kHeading) + "\n" + kRule + "\n";
  for (const Row& row : rows) {
    text += formatted("| %s | %d | %d | %d | %.2f | %d | %d | %.2f |\n", row.what.c_str(), row.stubs,
                      row.plugin, row.twin, row.ratio(), row.dylib, row.dylibTwin, row.dylibRatio());
  }
  return text;
}

std::vector<Row> rowsIn(const std::string& document) {
  const Lines lines = linesOf(document);
  const auto [begin, end] = tableIn(lines);
  std::vector<Row> rows;
  for (size_t i = begin + 2; i < end; ++i) rows.push_back(rowOf(lines[i]));
  return rows;
}

bool writeInto(const std::string& document, const std::vector<Row>& rows) {
  const Lines lines = linesOf(document);
  const auto [begin, end] = tableIn(lines);
  if (begin == end) return false;
  std::string content;
  for (size_t i = 0; i < begin; ++i) content += lines[i] + "\n";
  content += asMarkdown(rows);
  for (size_t i = end; i < lines.size(); ++i) content += lines[i] + "\n";
  std::ofstream stream(document);
  stream << content << std::flush;
  return stream.good();
}

}  // namespace bench::calls
