// The readers of the formats. Each appends the text of a document to `text`, which may get full on the way:
// then what it has so far is the text. `file` is open at the start of a regular file, belongs to the caller,
// and is left at any position. They throw a DocumentError when there is no text to be told, and
// std::bad_alloc.
#pragma once

#include "standin/documents/limits.h"
#include "standin/documents/text.h"

namespace standin::documents {

// By Debian's pdftotext.
void readPdf(int file, const Deadline& deadline, Text& text);

// Text, spreadsheets, presentations, drawings: paragraphs with headers and footers, notes and comments,
// without what tracked changes deleted.
void readOpenDocument(int file, const Deadline& deadline, Text& text);

// Likewise. The values of a sheet's cells are as they are stored: a date is a number of days.
void readOpenXml(int file, const Deadline& deadline, Text& text);

// The pages that the package lists.
void readEpub(int file, const Deadline& deadline, Text& text);

// What a browser shows, and the title.
void readHtml(int file, const Deadline& deadline, Text& text);

// What is shown: neither hidden text nor what tracked changes deleted.
void readRtf(int file, const Deadline& deadline, Text& text);

}  // namespace standin::documents
