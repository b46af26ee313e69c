#include "standin/corefoundation/urls/escape.h"

namespace cf {
namespace {

bool standsForItself(unsigned char c) {
  if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return true;
  return c != 0 && std::string_view("!$&'()*+,-./:=@_~").find(static_cast<char>(c)) != std::string_view::npos;
}

int hexValue(char c) {
  return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
}

}  // namespace

std::string escapePath(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  escaped.reserve(bytes.size() + 16);
  for (const char c : bytes) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (standsForItself(byte)) {
      escaped += c;
    } else {
      escaped += '%';
      escaped += kDigits[byte >> 4];
      escaped += kDigits[byte & 15];
    }
  }
  return escaped;
}

std::string unescape(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      bytes += static_cast<char>(hexValue(text[i + 1]) << 4 | hexValue(text[i + 2]));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

}  // namespace cf
