// From a query string to an expression.
//
//   query      := conjunction ('||' conjunction)*
//   conjunction:= primary ('&&' primary)*
//   primary    := '!'? '(' query ')' | range | comparison
//   range      := 'InRange' '(' KEY ',' number ',' number ')'      the name in any case
//   comparison := KEY modifiers? OPERATOR modifiers? VALUE [cdw]*   modifiers in brackets: '[' [cdw]* ']'
//
// A value is text in double or single quotes, in which `\` takes the next character as it is, or a bare word:
// a number, `true`, `false`, or a word without blanks, quotes, operators, brackets, commas, `$` and `\`.
// Unescaped,
// `*` stands for any run of characters and `?` for one character, in quotes and in bare words.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "query_expression.h"

namespace standin::metadata {

struct ParseError {
  size_t position;  // in UTF-16 units from the start of the string
  std::string reason;
};

std::variant<ExpressionRef, ParseError> parseQuery(std::u16string_view text);

}  // namespace standin::metadata
