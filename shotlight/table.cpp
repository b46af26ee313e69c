#include "shotlight/table.h"

#include <algorithm>
#include <array>
#include <utility>

#include "shotlight/output.h"
#include "shotlight/text.h"

namespace shotlight {
namespace {

const size_t kGap = 2;  // columns between two columns of the table

void widen(std::vector<size_t>& widths, const std::vector<std::string>& row) {
  for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
}

void printAligned(const std::vector<Column>& columns, const std::vector<size_t>& widths,
                  const std::vector<std::string>& row) {
  std::string line;
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string padding(widths[i] - displayWidth(row[i]), ' ');
    if (i > 0) line.append(kGap, ' ');
    line += columns[i].number ? padding + row[i] : row[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  print(line + '\n');
}

// The bytes that are printed as they are, whatever stands beside them.
constexpr std::array<bool, 256> plainBytes() {
  std::array<bool, 256> plain{};
  for (size_t byte = 0x20; byte < 0x7F; ++byte) plain[byte] = byte != '\\';
  return plain;
}
constexpr auto kPlain = plainBytes();

bool isPlain(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char byte) { return kPlain[byte]; });
}

}  // namespace

std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) result.append(c == '\\' ? 2 : 1, c);
  return escapeControls(result);
}

void printRow(const std::vector<std::string>& row) {
  static std::string line;  // its memory serves the next row, too
  line.clear();
  for (size_t i = 0; i < row.size(); ++i) {
    if (i > 0) line += '\t';
    if (isPlain(row[i])) {
      line += row[i];
    } else {
      line += printable(row[i]);
    }
  }
  line += '\n';
  print(line);
}

void printTable(const std::vector<Column>& columns, std::vector<std::vector<std::string>> rows,
                bool aligned) {
  if (!aligned) {
    for (const auto& row : rows) printRow(row);
    return;
  }
  std::vector<size_t> widths;
  printPart(columns, std::move(rows), widths);
}

void printPart(const std::vector<Column>& columns, std::vector<std::vector<std::string>> rows,
               std::vector<size_t>& widths) {
  for (auto& row : rows) std::transform(row.begin(), row.end(), row.begin(), printable);
  if (widths.empty()) {
    std::vector<std::string> titles;
    for (const Column& column : columns) titles.push_back(column.title);
    rows.insert(rows.begin(), std::move(titles));
    widths.resize(columns.size());
  }
  for (const auto& row : rows) widen(widths, row);
  for (const auto& row : rows) printAligned(columns, widths, row);
}

}  // namespace shotlight
