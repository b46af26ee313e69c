#include "standin/documents/html_encoding.h"

#include <unicode/ucnv.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace standin::documents {
namespace {

// Where a page may name its encoding. Browsers look no further than 1,024 bytes, and pages written by hand
// do.
constexpr size_t kWhereNamed = 4096;

constexpr struct {
  std::string_view bytes;
  const char* encoding;
} kMarks[] = {
    {"\xEF\xBB\xBF", "UTF-8"},
    {"\xFF\xFE", "UTF-16LE"},
    {"\xFE\xFF", "UTF-16BE"},
};

bool isUtf8(std::string_view bytes) {
  const auto length = static_cast<int32_t>(bytes.size());
  for (int32_t position = 0; position < length;) {
    UChar32 character = 0;
    U8_NEXT(bytes.data(), position, length, character);
    if (character < 0) return false;
  }
  return true;
}

// Also white space, as ';' and '>' end an unquoted value.
bool endsName(char c) {
  return std::string_view(" \t\r\n\f;/>?\"'").find(c) != std::string_view::npos;
}

// What follows the word and "=" in `tag`, which is in lower case; empty when there is none.
std::string_view valueAfter(std::string_view tag, std::string_view word) {
  const size_t found = tag.find(word);
  if (found == std::string_view::npos) return {};
  tag.remove_prefix(found + word.size());
  const size_t start = tag.find_first_not_of(" \t\r\n\f='\"");
  if (start == std::string_view::npos || tag.substr(0, start).find('=') == std::string_view::npos) return {};
  tag.remove_prefix(start);
  return tag.substr(0, static_cast<size_t>(std::ranges::find_if(tag, endsName) - tag.begin()));
}

// Of the XML declaration or the first <meta> that names one; empty when none does.
std::string namedEncoding(std::string_view page) {
  std::string start(page.substr(0, kWhereNamed));
  for (char& c : start) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  const std::string_view lower = start;
  if (lower.starts_with("<?xml")) {
    const auto name = valueAfter(lower.substr(0, lower.find('>')), "encoding");
    if (!name.empty()) return std::string(name);
  }
  for (size_t tag = 0; (tag = lower.find("<meta", tag)) != std::string_view::npos; ++tag) {
    const auto name = valueAfter(lower.substr(tag, lower.find('>', tag) - tag), "charset");
    if (!name.empty()) return std::string(name);
  }
  return {};
}

bool isKnown(const std::string& encoding) {
  UErrorCode error = U_ZERO_ERROR;
  ucnv_close(ucnv_open(encoding.c_str(), &error));
  return U_SUCCESS(error);
}

}  // namespace

std::string encodingOfHtml(std::string_view page) {
  for (const auto& mark : kMarks) {
    if (page.starts_with(mark.bytes)) return mark.encoding;
  }
  const std::string name = namedEncoding(page);
  // Latin 1 and ASCII mean windows-1252 in pages, and what could be read as far as here is no UTF-16.
  const bool isLatin = name == "iso-8859-1" || name == "latin1" || name == "us-ascii" || name == "ascii";
  if (isLatin) return "windows-1252";
  if (!name.empty() && !name.starts_with("utf-16") && !name.starts_with("utf-32") && isKnown(name))
    return name;
  return isUtf8(page) ? "UTF-8" : "windows-1252";
}

}  // namespace standin::documents
