// Core Foundation's strings as text of the search.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

namespace standin::metadata {

inline std::u16string textOf(CFStringRef string) {
  std::u16string text(static_cast<size_t>(CFStringGetLength(string)), u'\0');
  CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)),
                        reinterpret_cast<UniChar*>(text.data()));
  return text;
}

// UTF-8; empty for a string that has none.
inline std::string utf8Of(CFStringRef string) {
  const CFIndex room =
      CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
  std::string text(static_cast<size_t>(room), '\0');
  if (!CFStringGetCString(string, text.data(), room, kCFStringEncodingUTF8)) return {};
  text.resize(text.find('\0'));
  return text;
}

}  // namespace standin::metadata
