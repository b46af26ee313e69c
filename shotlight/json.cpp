#include "shotlight/json.h"

#include <unicode/utf8.h>

#include <cmath>
#include <cstdio>
#include <vector>

#include "shotlight/values.h"

namespace shotlight {
namespace {

namespace host = standin::host;

int inside(int level) {
  return level == kJsonOneLine ? kJsonOneLine : level + 1;
}

// `lines` between the brackets, each on a line of its own, unless all is on one.
std::string block(char open, const std::vector<std::string>& lines, char close, int level) {
  const bool isOneLine = level == kJsonOneLine;
  std::string result(1, open);
  for (size_t i = 0; i < lines.size(); ++i) {
    result += i > 0 ? "," : "";
    result += isOneLine ? (i > 0 ? " " : "") : jsonIndent(level + 1);
    result += lines[i];
  }
  if (!lines.empty() && !isOneLine) result += jsonIndent(level);
  return result + close;
}

std::string list(const host::Value& value, int level) {
  std::vector<std::string> lines;
  for (const host::Value& element : host::elements(value)) lines.push_back(json(element, inside(level)));
  return block('[', lines, ']', level);
}

std::string dictionary(const host::Value& value, int level) {
  JsonMembers members;
  for (const auto& [key, element] : host::entries(value)) members.emplace_back(joinedText(key), element);
  return jsonObject(members, level);
}

// Controls, separators of lines and paragraphs, and what turns the direction of writing.
bool isEscaped(UChar32 code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x061C || code == 0x200E || code == 0x200F ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

void appendEscape(std::string& text, char16_t code) {
  char escape[7];
  std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(code));
  text += escape;
}

}  // namespace

std::string jsonIndent(int level) {
  return '\n' + std::string(2 * static_cast<size_t>(level), ' ');
}

std::string jsonString(const std::string& utf8) {
  constexpr UChar32 kNoCharacter = 0xDC00;  // and the byte
  std::string result = "\"";
  const auto size = static_cast<int32_t>(utf8.size());
  for (int32_t i = 0; i < size;) {
    const int32_t start = i;
    UChar32 code = 0;
    U8_NEXT(utf8.data(), i, size, code);
    if (code < 0) {
      i = start + 1;
      const auto byte = static_cast<unsigned char>(utf8[static_cast<size_t>(start)]);
      appendEscape(result, static_cast<char16_t>(kNoCharacter + byte));
    } else if (code == '"' || code == '\\') {
      result += {'\\', static_cast<char>(code)};
    } else if (isEscaped(code)) {
      appendEscape(result, static_cast<char16_t>(code));
    } else {
      result.append(utf8, static_cast<size_t>(start), static_cast<size_t>(i - start));
    }
  }
  return result + '"';
}

std::string jsonObject(const JsonMembers& members, int level) {
  std::vector<std::string> lines;
  for (const auto& [name, value] : members)
    lines.push_back(jsonString(name) + ": " + json(value, inside(level)));
  return block('{', lines, '}', level);
}

std::string json(const host::Value& value, int level) {
  switch (formOf(value)) {
    case Form::boolean:
      return plainText(value);
    case Form::number:
      return std::isfinite(value.number()) ? plainText(value) : "null";
    case Form::text:
    case Form::bytes:
    case Form::date:
      return jsonString(plainText(value));
    case Form::list:
      return list(value, level);
    case Form::dictionary:
      return dictionary(value, level);
    default:
      return "null";
  }
}

}  // namespace shotlight
