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
      return value.kind() == host::Kind::string ? value.text() : host::path(value);
    case Form::bytes:
      return hexDigits(value.bytes());
    case Form::date:
      return dateText(value);
    default:
      return value.describe();
  }
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
  std::string joined;
  const Form form = formOf(value);
  switch (form) {
    case Form::list:
      for (const host::Value& element : host::elements(value))
        joined += (joined.empty() ? "" : ", ") + joinedText(element);
      return joined;
    case Form::dictionary:
      for (const auto& [key, element] : host::entries(value))
        joined += (joined.empty() ? "" : ", ") + joinedText(key) + " = " + joinedText(element);
      return '{' + joined + '}';
    default:
      return plainText(value, form);
  }
}

}  // namespace shotlight
