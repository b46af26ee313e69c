#include "shotlight/json.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "shotlight/values.h"
#include "standin/gate/shown_text.h"

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

}  // namespace

std::string jsonIndent(int level) {
  return '\n' + std::string(2 * static_cast<size_t>(level), ' ');
}

std::string jsonString(const std::string& utf8) {
  constexpr unsigned kStrayByte = 0xDC00;  // and the byte: no character has that number
  std::string result = "\"";
  for (size_t i = 0; i < utf8.size();) {
    const standin::Character character = standin::characterAt(utf8, i);
    if (standin::disturbs(character)) {
      char escape[7];
      const unsigned code = character.code + (character.valid ? 0 : kStrayByte);
      std::snprintf(escape, sizeof escape, "\\u%04x", code & 0xFFFF);
      result += escape;
    } else {
      if (character.code == '"' || character.code == '\\') result += '\\';
      result.append(utf8, i, character.length);
    }
    i += character.length;
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
