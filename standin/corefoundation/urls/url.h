// URLs: an ASCII string, perhaps with a base that it is relative to.
//
// This room has URLs, their parts, and the way from file names to them and back. It includes the runtime, the
// strings and ICU.
#pragma once

#include <CoreFoundation/CFURL.h>

#include <string>
#include <string_view>

#include "standin/corefoundation/runtime/object.h"
#include "standin/corefoundation/urls/parse.h"

namespace cf {

// What a URL was made from.
enum class URLOrigin : uint8_t {
  String,
  RelativePath,  // a colon in it ends no scheme
  AbsolutePath,
};

}  // namespace cf

struct __CFURL : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kURLType;
  CFStringRef string;
  CFURLRef base;  // null in an absolute URL
  cf::URLOrigin origin;
  bool wasDirectory;  // the path that it was made from ended in a slash, which the string may not have

  std::string_view text() const;
};

namespace cf {

// A new URL with a count of 1, or null when there is no memory. The text must be ASCII. Retains the base.
CFURLRef makeURL(std::string_view text, CFURLRef base, URLOrigin origin, const char* call,
                 bool wasDirectory = false);

// Good as long as the URL.
URLParts partsOf(CFURLRef url);
std::string absoluteText(CFURLRef url);

}  // namespace cf
