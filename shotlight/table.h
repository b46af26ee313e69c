// Rows of text for people and for programs.
#pragma once

#include <string>
#include <vector>

namespace shotlight {

struct Column {
  std::string title;
  bool number = false;  // aligned to the right
};

// The text on one line: what would break it or move a terminal's cursor is escaped (see escapeControls), and
// a backslash doubled, so that the text can be had back.
std::string printable(const std::string& utf8);

// Prints the row as one line, with tabs between the columns; see printTable.
void printRow(const std::vector<std::string>& row);

// Prints an aligned table with titles when `aligned`; otherwise one line a row, with tabs between the columns
// and no titles. Texts are UTF-8, and printed as printable has them. Throws CommandError when standard output
// takes no more.
void printTable(const std::vector<Column>& columns, std::vector<std::vector<std::string>> rows, bool aligned);

// Prints some rows of an aligned table, and before the first of all the titles. `widths` is empty before
// them, and is given on from part to part: columns get wider, never narrower.
void printPart(const std::vector<Column>& columns, std::vector<std::vector<std::string>> rows,
               std::vector<size_t>& widths);

}  // namespace shotlight
