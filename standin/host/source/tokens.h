// The words, literals and signs that the text of a program consists of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/host/source/tree.h"

namespace standin::host {

enum class TokenKind { word, name, literal, color, sign, lineEnd, end };

struct Token {
  TokenKind kind;
  std::string text;  // as it was written; of a word of the language its usual form ("ElseIf")
  Place place;
  Literal literal = {};  // of colours the number

  bool is(std::string_view wordOrSign) const {
    return (kind == TokenKind::word || kind == TokenKind::sign) && text == wordOrSign;
  }
  std::string describe() const;  // for messages: 'Then', the end of the line
};

// The whole text, without comments. Continued lines are one; lines without tokens have no end. The last token
// is the end. Throws SourceError.
std::vector<Token> tokensOf(std::string_view source);

}  // namespace standin::host
