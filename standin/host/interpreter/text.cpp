#include "standin/host/interpreter/text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>

#include "standin/host/interpreter/machine.h"
#include "standin/host/language/encodings.h"

namespace standin::host {
namespace {

constexpr size_t kMostBytes = 32 << 20;

const std::string& checked(const std::string& bytes) {
  if (bytes.size() > kMostBytes) raise("OutOfMemoryException", "a text of more than 32 MB");
  return bytes;
}

bool isAscii(const Value& text) {
  return text.isNil() || isAsciiText(text.bytes(), text.encoding());
}

}  // namespace

std::string utf8Of(const Value& text) {
  if (text.isNil()) return {};
  if (text.encoding() == kEncodingUtf8 || text.encoding() == kEncodingUnknown) return text.bytes();
  return convert(text.bytes(), text.encoding(), kEncodingUtf8).value_or(text.bytes());
}

std::u32string charactersOf(const Value& text) {
  const std::string utf8 = utf8Of(text);
  auto bytes = convert(utf8, kEncodingUtf8, kEncodingUtf32);
  if (!bytes) bytes = convert(utf8, kEncodingUnknown, kEncodingUtf32);
  std::u32string characters(bytes->size() / sizeof(char32_t), U'\0');
  std::memcpy(characters.data(), bytes->data(), bytes->size());
  return characters;
}

Value textOf(std::u32string_view characters) {
  const std::string_view bytes(reinterpret_cast<const char*>(characters.data()),
                               characters.size() * sizeof(char32_t));
  return Value::string(checked(convert(bytes, kEncodingUtf32, kEncodingUtf8).value_or("")), kEncodingUtf8);
}

Value textOfBytes(const std::string& bytes) {
  const bool valid = convert(checked(bytes), kEncodingUtf8, kEncodingUtf16).has_value();
  return Value::string(bytes, valid ? kEncodingUtf8 : kEncodingUnknown);
}

Value joined(const Value& one, const Value& other) {
  if (one.isNil()) return other;
  if (other.isNil()) return one;
  if (one.encoding() != other.encoding()) return textOfBytes(utf8Of(one) + utf8Of(other));
  return Value::string(checked(one.bytes() + other.bytes()), one.encoding());
}

std::u32string folded(std::u32string characters) {
  for (char32_t& each : characters)
    each = static_cast<char32_t>(u_foldCase(static_cast<UChar32>(each), U_FOLD_CASE_DEFAULT));
  return characters;
}

int compareTexts(const Value& one, const Value& other) {
  if (!isAscii(one) || !isAscii(other)) return folded(charactersOf(one)).compare(folded(charactersOf(other)));
  const std::string a = utf8Of(one), b = utf8Of(other);
  const int difference = compareLetters(a.data(), b.data(), std::min(a.size(), b.size()));
  return difference != 0 ? difference
                         : static_cast<int>(a.size() > b.size()) - static_cast<int>(a.size() < b.size());
}

}  // namespace standin::host
