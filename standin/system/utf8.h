// Core Foundation's strings as bytes.
#pragma once

#include <CoreFoundation/CFString.h>

#include <optional>
#include <string>

namespace standin {

// The text in UTF-8, up to its first zero character; nothing when it holds an unpaired surrogate.
inline std::optional<std::string> utf8Of(CFStringRef string) {
  const CFIndex room =
      CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
  std::string text(static_cast<size_t>(room), '\0');
  if (!CFStringGetCString(string, text.data(), room, kCFStringEncodingUTF8)) return std::nullopt;
  text.resize(text.find('\0'));
  return text;
}

}  // namespace standin
