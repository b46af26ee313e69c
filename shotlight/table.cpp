#include "shotlight/table.h"

#include <algorithm>

#include "shotlight/text.h"

namespace shotlight {
namespace {

const size_t kGap = 2;  // columns between two columns of the table

std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\t') {
      result += "\\t";
    } else if (c == '\n') {
      result += "\\n";
    } else if (byte < 0x20 || byte == 0x7F) {
      char escape[5];
      std::snprintf(escape, sizeof escape, "\\x%02X", byte);
      result += escape;
    } else {
      result += c;
    }
  }
  return result;
}

std::vector<size_t> widthsOf(const std::vector<Column>& columns,
                             const std::vector<std::vector<std::string>>& rows) {
  std::vector<size_t> widths;
  for (size_t i = 0; i < columns.size(); ++i) {
    size_t width = displayWidth(columns[i].title);
    for (const auto& row : rows) width = std::max(width, displayWidth(row[i]));
    widths.push_back(width);
  }
  return widths;
}

void printAligned(std::FILE* out, const std::vector<Column>& columns, const std::vector<size_t>& widths,
                  const std::vector<std::string>& row) {
  std::string line;
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string padding(widths[i] - displayWidth(row[i]), ' ');
    if (i > 0) line.append(kGap, ' ');
    line += columns[i].number ? padding + row[i] : row[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  std::fprintf(out, "%s\n", line.c_str());
}

void printTabbed(std::FILE* out, const std::vector<std::string>& row) {
  for (size_t i = 0; i < row.size(); ++i) std::fprintf(out, "%s%s", i > 0 ? "\t" : "", row[i].c_str());
  std::fputc('\n', out);
}

}  // namespace

void printTable(std::FILE* out, const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows, bool aligned) {
  std::vector<std::vector<std::string>> lines = rows;
  for (auto& line : lines) std::transform(line.begin(), line.end(), line.begin(), printable);
  if (!aligned) {
    for (const auto& line : lines) printTabbed(out, line);
    return;
  }
  const auto widths = widthsOf(columns, lines);
  std::vector<std::string> titles;
  for (const Column& column : columns) titles.push_back(column.title);
  printAligned(out, columns, widths, titles);
  for (const auto& line : lines) printAligned(out, columns, widths, line);
}

}  // namespace shotlight
