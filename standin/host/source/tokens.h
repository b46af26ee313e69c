// The words, literals and signs that the text of a program consists of.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/source/source_error.h"

namespace standin::host {

enum class TokenKind { word, name, whole, real, color, text, sign, lineEnd, end };

struct Token {
  TokenKind kind;
  // As it was written; of a word of the language its usual form ("ElseIf"); of a text what it means.
  std::string text;
  Place place;
  int64_t whole = 0;  // of whole numbers and colours
  double real = 0;

  bool is(std::string_view wordOrSign) const {
    return (kind == TokenKind::word || kind == TokenKind::sign) && text == wordOrSign;
  }
  std::string describe() const;  // for messages: 'Then', a text, the end of the line
};

// The whole text, without comments. Continued lines are one; lines without tokens have no end. The last token
// is the end. Throws SourceError.
std::vector<Token> tokensOf(std::string_view source);

}  // namespace standin::host
