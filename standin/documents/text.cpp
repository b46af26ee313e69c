#include "standin/documents/text.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <cstdint>

#include "standin/documents/limits.h"

namespace standin::documents {
namespace {

constexpr UChar32 kSoftHyphen = 0xAD;
constexpr UChar32 kByteOrderMark = 0xFEFF;
constexpr UChar32 kReplacement = 0xFFFD;

// What most texts consist of, and what nothing need be asked about.
bool isPlain(char c) {
  return c > ' ' && c < 0x7F;
}

}  // namespace

void Text::append(std::string_view characters) {
  const size_t blank = blank_ && !utf8_.empty() ? 1 : 0;
  if (utf8_.size() + blank + characters.size() > kLongestText) full_ = true;
  if (full_) return;
  utf8_.append(blank, ' ');
  utf8_.append(characters);
  blank_ = false;
}

void Text::addCharacter(int32_t character) {
  if (character < 0) character = kReplacement;
  if (u_isUWhiteSpace(character) || u_charType(character) == U_CONTROL_CHAR) {
    blank_ = true;
  } else if (character != kSoftHyphen && character != kByteOrderMark) {
    char encoded[U8_MAX_LENGTH];
    size_t size = 0;
    U8_APPEND_UNSAFE(encoded, size, character);
    append({encoded, size});
  }
}

void Text::add(std::string_view characters) {
  const auto length = static_cast<int32_t>(characters.size());
  for (int32_t position = 0; position < length && !full_;) {
    const char first = characters[static_cast<size_t>(position)];
    if (isPlain(first)) {
      append({&first, 1});
      ++position;
    } else if (first == ' ') {
      blank_ = true;
      ++position;
    } else {
      UChar32 character = 0;
      U8_NEXT(characters.data(), position, length, character);
      addCharacter(character);
    }
  }
}

}  // namespace standin::documents
