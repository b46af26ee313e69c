// language/: the query language: from a query string to an expression, and whether something that has
// attributes matches it. It includes attributes/ and no other room: whose attributes they are, and where they
// come from, it doesn't know.
//
// Here: from a query string to an expression.
//
//   query      := conjunction ('||' conjunction)*
//   conjunction:= primary ('&&' primary)*
//   primary    := '!'? '(' query ')' | range | comparison
//   range      := 'InRange' '(' KEY ',' number ',' number ')'      the name in any case
//   comparison := KEY modifiers? OPERATOR modifiers? VALUE [cdw]*   modifiers in brackets: '[' [cdw]* ']'
//
// A value is text in double or single quotes, in which `\` takes the next character as it is; a time (see
// time_values.h), with or without quotes; or a bare word without blanks, quotes, operators, brackets, commas,
// `$` and `\`; under the key of a date also a date alone (see time_values.h), with or without quotes.
// Unescaped, `*` stands for any run of characters and `?` for one character, in quotes and in bare words. A
// number, and `true` and `false` in any case, mean those values, too, with or without quotes; under the key
// `*` quoted `true` and `false` are text only. Where a number is wanted, a time will do.
//
// The text of `kMDItemTextContent` is compared by whole words, as though the modifier `w` were there, and
// a run of white space in the value counts as one blank.
#pragma once

#include <string_view>
#include <variant>

#include "standin/coreservices/language/expression.h"
#include "standin/coreservices/language/parse_error.h"

namespace standin::metadata {

// Times in the expression that are relative to the present stay so until they are resolved.
std::variant<ExpressionRef, ParseError> parseQuery(std::u16string_view text);

}  // namespace standin::metadata
