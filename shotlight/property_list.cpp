#include "shotlight/property_list.h"

#include "shotlight/values.h"
#include "standin/gate/shown_text.h"

namespace shotlight {
namespace {

namespace host = standin::host;

std::string indent(int level) {
  return std::string(2 * static_cast<size_t>(level), ' ');
}

std::string quoted(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return '"' + standin::shownText(result) + '"';
}

}  // namespace

std::string propertyList(const host::Value& value, int level) {
  std::string result;
  switch (formOf(value)) {
    case Form::nothing:
      return "(none)";
    case Form::text:
      return quoted(plainText(value));
    case Form::bytes:
      return '<' + plainText(value) + '>';
    case Form::list:
      for (const host::Value& element : host::elements(value))
        result += indent(level + 1) + propertyList(element, level + 1) + '\n';
      return result.empty() ? "()" : "(\n" + result + indent(level) + ')';
    case Form::dictionary:
      for (const auto& [key, element] : host::entries(value))
        result += indent(level + 1) + propertyList(key, level + 1) + " = " +
                  propertyList(element, level + 1) + '\n';
      return result.empty() ? "{}" : "{\n" + result + indent(level) + '}';
    default:
      return plainText(value);
  }
}

}  // namespace shotlight
