// Rows of text for people and for programs.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace shotlight {

struct Column {
  std::string title;
  bool number = false;  // aligned to the right
};

// An aligned table with titles when `aligned`; otherwise one line a row, with tabs between the columns and no
// titles. Texts are UTF-8. Control characters are printed as \t, \n, \xHH, so that a row is always one line.
void printTable(std::FILE* out, const std::vector<Column>& columns,
                const std::vector<std::vector<std::string>>& rows, bool aligned);

}  // namespace shotlight
