// Where in text the words of a pattern may begin.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "standin/coreservices/language/characters.h"

namespace standin::metadata {

// Passes over ASCII text in which words don't begin, which is most of the text of any document in most of the
// languages written in Latin letters.
class WordSearch {
 public:
  // `words` is what the text, folded, must hold: at least one character. Ignoring case, it is in small
  // letters.
  WordSearch(std::u32string_view words, bool ignoreCase);

  // How many bytes of the text lie before the first place where the words may begin, or for all that is
  // looked at might: that and what follows have yet to be read. What is passed over is ASCII, and composes
  // with nothing.
  size_t passOver(std::string_view text) const;

 private:
  size_t nextPlace(std::string_view text, size_t from) const;
  bool mayBeginAt(std::string_view text, size_t at) const;
  char folded(char c) const { return ignoreCase_ ? lowerAscii(c) : c; }

  std::string start_;  // the words as far as they are ASCII
  bool ignoreCase_;
};

}  // namespace standin::metadata
