// URLs: an ASCII string, perhaps with a base that it is relative to, and the functions on which the files of
// this subject share.
#pragma once

#include <CoreFoundation/CFURL.h>

#include <optional>
#include <string>
#include <string_view>

#include "standin/corefoundation/string.h"

struct __CFURL : cf::Header {
  static constexpr CFTypeID typeId = cf::kURLType;
  CFStringRef string;
  CFURLRef base;    // null in an absolute URL
  bool isPathOnly;  // made from a relative path: a colon in it ends no scheme

  std::string_view text() const;
};

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

URLParts parse(std::string_view text, bool isPathOnly);
URLParts partsOf(CFURLRef url);

// Whether every character may stand in a URL, and every escape is complete.
bool isLegalURL(std::string_view text);

// Bytes of a file name as they stand in the path of a URL.
std::string escapePath(std::string_view bytes);
std::string unescape(std::string_view text);

// The text in UTF-8; nothing when it holds an unpaired surrogate.
std::optional<std::string> utf8Of(Text text);
// Decomposed as file names of the platform are.
std::optional<std::string> fileNameOf(Text text);

// The absolute form of `relative` against an absolute base; an opaque base gives its scheme only.
std::string resolve(const URLParts& base, const URLParts& relative);
std::string absoluteText(CFURLRef url);

// A new URL with a count of 1, or null when there is no memory. Retains the base.
CFURLRef makeURL(std::string_view text, CFURLRef base, bool isPathOnly, const char* call);

}  // namespace cf
