// Rows of text for people and for programs.
#pragma once

#include <string>
#include <vector>

namespace shotlight {

struct Column {
  std::string title;
  bool number = false;  // aligned to the right
};

// Prints an aligned table with titles when `aligned`; otherwise one line a row, with tabs between the columns
// and no titles. Texts are UTF-8. What would break a line or move a terminal's cursor is printed escaped (see
// escapeControls), and a backslash doubled, so that a row is one line and its texts can be had back. Throws
// CommandError when standard output takes no more.
void printTable(const std::vector<Column>& columns, std::vector<std::vector<std::string>> rows, bool aligned);

}  // namespace shotlight
