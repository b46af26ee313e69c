#include "standin/corefoundation/urls/parse.h"

#include <algorithm>

namespace cf {
namespace {

bool isLetterOrDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// Cuts the front off `rest` up to the first of `ends`, or all of it.
std::string_view take(std::string_view& rest, const char* ends) {
  const size_t length = std::min(rest.find_first_of(ends), rest.size());
  const std::string_view front = rest.substr(0, length);
  rest.remove_prefix(length);
  return front;
}

std::string_view takeScheme(std::string_view& rest) {
  const auto outside = [](char c) { return !isLetterOrDigit(c) && c != '+' && c != '-' && c != '.'; };
  const auto end = std::find_if(rest.begin(), rest.end(), outside);
  if (end == rest.end() || *end != ':') return {};
  const std::string_view scheme = rest.substr(0, static_cast<size_t>(end - rest.begin()) + 1);
  rest.remove_prefix(scheme.size());
  return scheme;
}

}  // namespace

URLParts parse(std::string_view text, bool isPathOnly) {
  URLParts parts;
  if (isPathOnly) {
    parts.path = text;
    return parts;
  }
  parts.scheme = takeScheme(text);
  if (!parts.scheme.empty() && !text.starts_with('/')) {
    parts.isOpaque = true;
    return parts;
  }
  if (text.starts_with("//")) {
    std::string_view host = text.substr(2);
    parts.authority = text.substr(0, 2 + take(host, "/;?#").size());
    text = host;
  }
  parts.path = take(text, ";?#");
  parts.parameters = take(text, "?#");
  parts.query = take(text, "#");
  parts.fragment = text;
  return parts;
}

bool isLegalURL(std::string_view text) {
  bool inFragment = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '%') {
      if (text.size() - i < 3 || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) return false;
    } else if (c == '#') {
      if (inFragment) return false;
      inFragment = true;
    } else if (!isLetterOrDigit(c) &&
               std::string_view("!$&'()*+,-./:;=?@[]_~").find(c) == std::string_view::npos) {
      return false;
    }
  }
  return true;
}

}  // namespace cf
