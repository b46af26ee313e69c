// The rows as a table: for people, and in the document, where bench-calls puts it and tests read what they
// hold.
#pragma once

#include <string>
#include <vector>

#include "bench/calls/rows.h"

namespace bench::calls {

std::string asText(const std::vector<Row>& rows);
std::string asMarkdown(const std::vector<Row>& rows);

// docs/developing.md
extern const char kDocument[];

// The rows of a document's table. Empty when the document can't be read or has no such table.
std::vector<Row> rowsIn(const std::string& document);
// Puts the rows into the place of a document's table. False when there is none, or when it can't be
// written.
bool writeInto(const std::string& document, const std::vector<Row>& rows);

}  // namespace bench::calls
