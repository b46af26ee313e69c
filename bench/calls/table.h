// The rows as a table, and the one in the documents, which bench-calls makes and tests read.
#pragma once

#include <string>
#include <vector>

#include "bench/calls/rows.h"

namespace bench::calls {

std::string asText(const std::vector<Row>& rows);
std::string asMarkdown(const std::vector<Row>& rows);

// The rows of the document's table. Empty when the document can't be read or has no such table.
std::vector<Row> rowsIn(const std::string& document);
// Puts the rows into the place of the document's table. False when there is none, or when it can't be
// written.
bool writeInto(const std::string& document, const std::vector<Row>& rows);

}  // namespace bench::calls
