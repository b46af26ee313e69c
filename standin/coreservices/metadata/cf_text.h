// Core Foundation's strings as UTF-16, which the query language reads. (As UTF-8: standin/system/utf8.h.)
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

}  // namespace standin::metadata
