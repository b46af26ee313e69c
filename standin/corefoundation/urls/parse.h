// The parts of a URL's text.
#pragma once

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

  // An empty path counts as one only behind a host.
  bool hasPath() const { return !isOpaque && (!path.empty() || authority.size() > 2); }
};

// Views into `text`. With `isPathOnly` all of it is the path.
URLParts parse(std::string_view text, bool isPathOnly);

// Whether every character may stand in a URL, and every escape is complete.
bool isLegalURL(std::string_view text);

}  // namespace cf
