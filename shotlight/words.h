// Plain words in the place of a query.
#pragma once

#include <string>

namespace shotlight {

// Whether the text is meant to compare attributes, in the right form or not: it has =, <, >, && or ||, or
// InRange and a parenthesis, wherever they stand. Anything else is plain words.
bool isComparison(const std::string& text);

// The query for the files that have every word of the text, in their display names or in what is in them,
// whatever the case and the accents of its letters. A name may have a word anywhere; a text must have a word
// that begins with it. A word with * in it is a pattern for the whole name. Words are what stands between
// blanks; there must be one.
std::string queryForWords(const std::string& text);

// The text as a value in a query, in double quotes, where it means itself.
std::string quotedValue(const std::string& text);

}  // namespace shotlight
