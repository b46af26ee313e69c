// Rows of text for people and for programs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "shotlight/text.h"

namespace shotlight {

struct Column {
  std::string title;
  bool number = false;  // aligned to the right, and never cut
  Cut cut = Cut::end;   // where a text that is too long loses characters
  bool whole = false;   // it is never too long
};

// UTF-8; names of files may have other bytes in them.
struct Cell {
  Cell() = default;
  Cell(std::string words) : text(std::move(words)) {}
  Cell(std::string words, std::string itsColor) : text(std::move(words)), color(std::move(itsColor)) {}
  std::string text;
  std::string color = {};  // as color.h has them
};
using Row = std::vector<Cell>;

// A text as standard output gets it, in one line (see shellWord). Bytes that are no UTF-8 are kept where they
// go to a file or a program.
std::string printable(const std::string& text);

// Prints the row as one line, with tabs between the columns; see printTable.
void printRow(const Row& row);

// Prints an aligned table with titles when `aligned`, and cuts it to the width of the terminal, if there is
// one; otherwise one line a row, with tabs between the columns and no titles. Texts are printed as printable
// has them. Throws CommandError when standard output takes no more.
void printTable(const std::vector<Column>& columns, std::vector<Row> rows, bool aligned);

// Prints some rows of an aligned table, and before the first of all the titles. `widest`, how wide the
// columns' texts are, is empty before them, and is given on from part to part: columns get wider, never
// narrower.
void printPart(const std::vector<Column>& columns, std::vector<Row> rows, std::vector<size_t>& widest);

}  // namespace shotlight
