#include "shotlight/values.h"

#include <charconv>
#include <cstdio>

namespace shotlight {
namespace {

namespace host = standin::host;

Form formOfObject(const host::Value& value) {
  if (host::isA(value, "Date")) return Form::date;
  if (host::isA(value, "Dictionary")) return Form::dictionary;
  if (host::isA(value, "FolderItem")) return Form::text;
  return Form::other;
}

std::string numberText(const host::Value& value) {
  char text[32];
  char* const end = text + sizeof text;
  switch (value.kind()) {
    case host::Kind::single:
      return {text, std::to_chars(text, end, static_cast<float>(value.number())).ptr};
    case host::Kind::number:
      return {text, std::to_chars(text, end, value.number()).ptr};
    default:
      return std::to_string(value.integer());
  }
}

std::string hexDigits(const std::string& bytes) {
  std::string digits;
  char pair[3];
  for (const char byte : bytes) {
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
    digits += pair;
  }
  return digits;
}

// The plug-in sets a date's fields in GMT.
std::string dateText(const host::Value& value) {
  const host::DateFields fields = host::fields(value);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", fields.year, fields.month, fields.day,
                fields.hour, fields.minute, fields.second);
  return text;
}

std::string plainText(const host::Value& value, Form form) {
  switch (form) {
    case Form::nothing:
      return "";
    case Form::boolean:
      return value.boolean() ? "true" : "false";
    case Form::number:
      return numberText(value);
    case Form::text:
      if (value.kind() != host::Kind::string) return host::path(value);
      // Names of files may have bytes in them that are no UTF-8 (names.h).
      return value.encoding() == host::kEncodingUtf8 ? value.bytes() : value.text();
    case Form::bytes:
      return hexDigits(value.bytes());
    case Form::date:
      return dateText(value);
    default:
      return value.describe();
  }
}

bool mustBeQuoted(const std::string& text, const char* specials) {
  return text.empty() || text.front() == ' ' || text.back() == ' ' || text.front() == '(' ||
         text.front() == '{' || text.find_first_of(specials) != std::string::npos;
}

std::string quoted(const std::string& text) {
  std::string result;
  for (const char c : text) result.append(c == '"' ? 2 : 1, c);
  return '"' + result + '"';
}

std::string joinedList(const host::Value& value, bool isNested);
std::string joinedDictionary(const host::Value& value);

// One of several values in a text.
std::string elementText(const host::Value& element, bool isNested) {
  const Form form = formOf(element);
  if (form == Form::list) return '(' + joinedList(element, true) + ')';
  if (form == Form::dictionary) return joinedDictionary(element);
  const std::string text = plainText(element, form);
  return mustBeQuoted(text, isNested ? "\",(){}=" : "\",") ? quoted(text) : text;
}

std::string joinedList(const host::Value& value, bool isNested) {
  std::string joined;
  for (const host::Value& element : host::elements(value))
    joined += (joined.empty() ? "" : ", ") + elementText(element, isNested);
  return joined;
}

std::string joinedDictionary(const host::Value& value) {
  std::string joined;
  for (const auto& [key, element] : host::entries(value))
    joined += (joined.empty() ? "" : ", ") + elementText(key, true) + " = " + elementText(element, true);
  return '{' + joined + '}';
}

}  // namespace

Form formOf(const host::Value& value) {
  if (value.isNil()) return Form::nothing;
  switch (value.kind()) {
    case host::Kind::boolean:
      return Form::boolean;
    case host::Kind::string:
      return value.encoding() == host::kEncodingUnknown ? Form::bytes : Form::text;
    case host::Kind::array:
      return Form::list;
    case host::Kind::object:
      return formOfObject(value);
    default:
      return Form::number;
  }
}

std::string plainText(const host::Value& value) {
  return plainText(value, formOf(value));
}

std::string joinedText(const host::Value& value) {
  switch (const Form form = formOf(value)) {
    case Form::list:
      return joinedList(value, false);
    case Form::dictionary:
      return joinedDictionary(value);
    default:
      return plainText(value, form);
  }
}

}  // namespace shotlight
