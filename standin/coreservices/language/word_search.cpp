#include "standin/coreservices/language/word_search.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <iterator>

namespace standin::metadata {
namespace {

bool isAsciiByte(char c) {
  return (c & 0x80) == 0;
}

char upperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

// Bytes that are looked at at once; of an answer, each byte has all bits set or none.
using Block = __m128i;

class OneOf {
 public:
  OneOf(char one, char other) : one_(_mm_set1_epi8(one)), other_(_mm_set1_epi8(other)) {}
  Block in(Block block) const {
    return _mm_or_si128(_mm_cmpeq_epi8(block, one_), _mm_cmpeq_epi8(block, other_));
  }

 private:
  Block one_, other_;
};

}  // namespace

WordSearch::WordSearch(std::u32string_view words, bool ignoreCase) : ignoreCase_(ignoreCase) {
  const auto end = std::find_if(words.begin(), words.end(), [](char32_t c) { return c >= 0x80; });
  std::transform(words.begin(), end, std::back_inserter(start_),
                 [](char32_t c) { return static_cast<char>(c); });
}

// The next byte that isn't ASCII, or where the first two characters stand. At the end of the text the second
// one isn't looked at.
size_t WordSearch::nextPlace(std::string_view text, size_t from) const {
  constexpr char kNoAscii = '\xFF';  // which is a place in any case
  const auto eitherCase = [&](char c) { return OneOf(c, ignoreCase_ ? upperAscii(c) : c); };
  const OneOf first = eitherCase(start_.empty() ? kNoAscii : start_[0]);
  const OneOf second = eitherCase(start_.size() < 2 ? kNoAscii : start_[1]);
  const Block anySecond = _mm_set1_epi8(start_.size() < 2 ? '\xFF' : 0);
  const auto load = [&](size_t at) {
    return _mm_loadu_si128(reinterpret_cast<const Block*>(text.data() + at));
  };
  for (; from + sizeof(Block) < text.size(); from += sizeof(Block)) {
    const Block here = load(from);
    const Block begins = _mm_and_si128(first.in(here), _mm_or_si128(second.in(load(from + 1)), anySecond));
    // The highest bit of each byte: in `begins` whether the words may begin, in `here` whether it isn't
    // ASCII.
    const auto places = static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(begins, here)));
    if (places != 0) return from + static_cast<size_t>(std::countr_zero(places));
  }
  const auto isPlace = [&](char c) { return !isAsciiByte(c) || start_.starts_with(folded(c)); };
  return static_cast<size_t>(std::find_if(text.begin() + static_cast<ptrdiff_t>(from), text.end(), isPlace) -
                             text.begin());
}

// As far as it is ASCII. Where that ends, the last character may be part of another one, which doesn't
// matter: all that an ASCII character composes to folds to what begins with the same as it, or with what
// isn't ASCII.
bool WordSearch::mayBeginAt(std::string_view text, size_t at) const {
  for (const char wanted : start_) {
    if (at == text.size()) return false;
    if (!isAsciiByte(text[at])) return true;
    if (folded(text[at++]) != wanted) return false;
  }
  return true;
}

size_t WordSearch::passOver(std::string_view text) const {
  const bool isAsciiFirst = text.size() > 1 && isAsciiByte(text[0]) && isAsciiByte(text[1]);
  if (!isAsciiFirst) return 0;
  for (size_t at = 0;; ++at) {
    at = nextPlace(text, at);
    if (at == text.size()) return at;
    // What stands before a character that isn't ASCII may compose with it.
    if (!isAsciiByte(text[at])) return at - std::min<size_t>(at, 1);
    const auto character = [&](size_t index) { return static_cast<char32_t>(text[index]); };
    const bool isBorder = at == 0 || isWordBorder(character(at - 1), character(at));
    if (isBorder && mayBeginAt(text, at)) return at;
  }
}

}  // namespace standin::metadata
