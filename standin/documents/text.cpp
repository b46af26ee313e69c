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

}  // namespace

void Text::append(const char* character, size_t length) {
  const size_t blank = blank_ && !utf8_.empty() ? 1 : 0;
  if (utf8_.size() + blank + length > kLongestText) full_ = true;
  if (full_) return;
  utf8_.append(blank, ' ');
  utf8_.append(character, length);
  blank_ = false;
}

void Text::add(std::string_view characters) {
  const auto length = static_cast<int32_t>(characters.size());
  for (int32_t position = 0; position < length && !full_;) {
    UChar32 character = 0;
    U8_NEXT(characters.data(), position, length, character);
    if (character < 0) character = kReplacement;
    if (u_isUWhiteSpace(character) || u_charType(character) == U_CONTROL_CHAR) {
      blank_ = true;
    } else if (character != kSoftHyphen && character != kByteOrderMark) {
      char encoded[U8_MAX_LENGTH];
      size_t size = 0;
      U8_APPEND_UNSAFE(encoded, size, character);
      append(encoded, size);
    }
  }
}

}  // namespace standin::documents
