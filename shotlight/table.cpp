#include "shotlight/table.h"

#include <unistd.h>

#include <algorithm>
#include <numeric>
#include <optional>

#include "shotlight/color.h"
#include "shotlight/output.h"

namespace shotlight {
namespace {

const size_t kGap = 2;        // columns between two columns of the table
const size_t kNarrowest = 4;  // what a column of text is cut to at the most

void widen(std::vector<size_t>& widest, const Row& row) {
  for (size_t i = 0; i < row.size(); ++i) widest[i] = std::max(widest[i], displayWidth(row[i].text));
}

// The columns' widths, as their widest texts are so wide. Where they don't fit, the widest gives way first;
// where nothing can any more, lines are longer than the terminal is wide.
std::vector<size_t> widthsOf(const std::vector<Column>& columns, const std::vector<size_t>& widest) {
  std::vector<size_t> widths, least;
  for (size_t i = 0; i < columns.size(); ++i) {
    widths.push_back(std::max(widest[i], displayWidth(columns[i].title)));
    least.push_back(columns[i].number || columns[i].whole ? widest[i] : std::min(widths[i], kNarrowest));
  }
  const std::optional<size_t> room = outputWidth();
  if (!room) return widths;
  size_t taken = std::accumulate(widths.begin(), widths.end(), kGap * (widths.size() - 1));
  for (; taken > *room; --taken) {
    size_t* first = nullptr;
    for (size_t i = 0; i < widths.size(); ++i) {
      if (widths[i] > least[i] && (!first || widths[i] > *first)) first = &widths[i];
    }
    if (!first) break;
    --*first;
  }
  return widths;
}

void printAligned(const std::vector<Column>& columns, const std::vector<size_t>& widths, const Row& row) {
  std::string line;
  for (size_t i = 0; i < row.size(); ++i) {
    const std::string text = cutToWidth(row[i].text, widths[i], columns[i].cut);
    const std::string padding(widths[i] - displayWidth(text), ' ');
    if (i > 0) line.append(kGap, ' ');
    if (columns[i].number) line += padding;
    line += painted(text, row[i].color);
    if (!columns[i].number) line += padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  print(line + '\n');
}

Reader readerOfOutput() {
  static const Reader reader = isatty(STDOUT_FILENO) ? Reader::person : Reader::program;
  return reader;
}

// ASCII that programs are given as it is, which nearly all texts are.
bool isPlain(const std::string& text) {
  return !text.starts_with("$'") &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

}  // namespace

std::string printable(const std::string& text) {
  return shellWord(text, readerOfOutput());
}

void printRow(const Row& row) {
  static std::string line;  // its memory serves the next row, too
  line.clear();
  for (size_t i = 0; i < row.size(); ++i) {
    if (i > 0) line += '\t';
    if (row[i].color.empty() && isPlain(row[i].text)) {
      line += row[i].text;
    } else {
      line += painted(printable(row[i].text), row[i].color);
    }
  }
  line += '\n';
  print(line);
}

void printTable(const std::vector<Column>& columns, std::vector<Row> rows, bool aligned) {
  if (!aligned) {
    for (const Row& row : rows) printRow(row);
    return;
  }
  std::vector<size_t> widest;
  printPart(columns, std::move(rows), widest);
}

void printPart(const std::vector<Column>& columns, std::vector<Row> rows, std::vector<size_t>& widest) {
  const bool isFirst = widest.empty();
  widest.resize(columns.size());
  for (Row& row : rows) {
    for (Cell& cell : row) cell.text = printable(cell.text);
    widen(widest, row);
  }
  const std::vector<size_t> widths = widthsOf(columns, widest);
  if (isFirst) {
    Row titles;
    for (const Column& column : columns) titles.push_back(column.title);
    printAligned(columns, widths, titles);
  }
  for (const Row& row : rows) printAligned(columns, widths, row);
}

}  // namespace shotlight
