#include "shotlight/json.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "shotlight/values.h"

namespace shotlight {
namespace {

namespace host = standin::host;

// `lines` between the brackets, each on a line of its own.
std::string block(char open, const std::vector<std::string>& lines, char close, int level) {
  std::string result(1, open);
  for (size_t i = 0; i < lines.size(); ++i) result += (i > 0 ? "," : "") + jsonIndent(level + 1) + lines[i];
  if (!lines.empty()) result += jsonIndent(level);
  return result + close;
}

std::string list(const host::Value& value, int level) {
  std::vector<std::string> lines;
  for (const host::Value& element : host::elements(value)) lines.push_back(json(element, level + 1));
  return block('[', lines, ']', level);
}

std::string dictionary(const host::Value& value, int level) {
  std::vector<std::string> lines;
  for (const auto& [key, element] : host::entries(value))
    lines.push_back(jsonString(joinedText(key)) + ": " + json(element, level + 1));
  return block('{', lines, '}', level);
}

}  // namespace

std::string jsonIndent(int level) {
  return '\n' + std::string(2 * static_cast<size_t>(level), ' ');
}

std::string jsonString(const std::string& utf8) {
  std::string result = "\"";
  for (const char c : utf8) {
    if (c == '"' || c == '\\') {
      result += {'\\', c};
    } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      char escape[7];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
      result += escape;
    } else {
      result += c;
    }
  }
  return result + '"';
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
