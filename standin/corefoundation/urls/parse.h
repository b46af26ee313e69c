// The parts of a URL's text.
#pragma once

#include <string>
#include <string_view>

namespace cf {

// Views into one URL string. What a part begins with belongs to it, so that the parts put together again are
// the string: "scheme:", "//authority", "path", ";parameters", "?query", "#fragment".
struct URLParts {
  std::string_view scheme;
  std::string_view authority;
  std::string_view path;
  std::string_view parameters;
  std::string_view query;
  std::string_view fragment;
  bool isOpaque = false;  // "mailto:x": a scheme with no slash behind it; it has no other parts

  // "//" alone names no host.
  bool hasHost() const { return authority.size() > 2; }
  // An empty path counts as one only behind a host.
  bool hasPath() const { return !isOpaque && (!path.empty() || hasHost()); }
};

// Views into `text`. With `isPathOnly` all of it is the path.
URLParts parse(std::string_view text, bool isPathOnly);

// Whether every character may stand in a URL, and every escape is complete.
bool isLegalURL(std::string_view text);

// A legal URL, with those of its characters escaped that may stand in other places only: square brackets
// anywhere but around a host, "#" where no fragment can be.
std::string withEscapes(std::string_view text);

}  // namespace cf
