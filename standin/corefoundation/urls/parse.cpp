#include "standin/corefoundation/urls/parse.h"

#include <algorithm>

namespace cf {
namespace {

constexpr std::string_view kBrackets = "[]";

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

// "user:password@host:port" without what isn't the host. A colon in brackets belongs to it.
std::string_view hostIn(std::string_view authority) {
  authority.remove_prefix(std::min<size_t>(authority.size(), 2));
  const size_t user = authority.find('@');
  if (user != std::string_view::npos) authority.remove_prefix(user + 1);
  bool inBrackets = false;
  const auto startsPort = [&inBrackets](char c) {
    if (c == '[') inBrackets = true;
    if (c == ']') inBrackets = false;
    return c == ':' && !inBrackets;
  };
  const auto port = std::find_if(authority.begin(), authority.end(), startsPort);
  return authority.substr(0, static_cast<size_t>(port - authority.begin()));
}

// Appends the part, with each of `misplaced` in it escaped.
void appendEscaped(std::string& text, std::string_view part, std::string_view misplaced) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char c : part) {
    if (misplaced.find(c) == std::string_view::npos) {
      text += c;
    } else {
      text.append({'%', kDigits[c >> 4], kDigits[c & 15]});
    }
  }
}

void appendAuthority(std::string& text, std::string_view authority) {
  std::string_view host = hostIn(authority);
  const size_t before = static_cast<size_t>(host.data() - authority.data());
  const std::string_view port = authority.substr(before + host.size());
  appendEscaped(text, authority.substr(0, before), kBrackets);
  const bool opens = host.starts_with('[');
  if (opens) host.remove_prefix(1);
  const bool closes = host.ends_with(']');
  if (closes) host.remove_suffix(1);
  if (opens) text += '[';
  appendEscaped(text, host, kBrackets);
  if (closes) text += ']';
  appendEscaped(text, port, kBrackets);
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
    parts.authority = text.substr(0, 2 + take(host, "/?#").size());
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

std::string withEscapes(std::string_view text) {
  const URLParts parts = parse(text, false);
  std::string escaped(parts.scheme);
  if (parts.isOpaque) {
    appendEscaped(escaped, text.substr(parts.scheme.size()), "[]#");
    return escaped;
  }
  appendAuthority(escaped, parts.authority);
  for (const std::string_view part : {parts.path, parts.parameters, parts.query, parts.fragment}) {
    appendEscaped(escaped, part, kBrackets);
  }
  return escaped;
}

}  // namespace cf
