#include "shotlight/text.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <memory>
#include <type_traits>

namespace shotlight {
namespace {

struct Release {
  void operator()(CFTypeRef value) const { CFRelease(value); }
};
using String = std::unique_ptr<const std::remove_pointer_t<CFStringRef>, Release>;

}  // namespace

std::optional<std::u16string> utf16(const std::string& utf8) {
  const String text(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
                                            static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
  if (!text) return std::nullopt;
  std::u16string units(static_cast<size_t>(CFStringGetLength(text.get())), u'\0');
  CFStringGetCharacters(text.get(), CFRangeMake(0, CFStringGetLength(text.get())),
                        reinterpret_cast<UniChar*>(units.data()));
  return units;
}

std::string utf8(std::u16string_view units) {
  const String text(CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(units.data()),
                                                 static_cast<CFIndex>(units.size())));
  const CFRange all = CFRangeMake(0, static_cast<CFIndex>(units.size()));
  CFIndex size = 0;
  CFStringGetBytes(text.get(), all, kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
  std::string bytes(static_cast<size_t>(size), '\0');
  CFStringGetBytes(text.get(), all, kCFStringEncodingUTF8, '?', false, reinterpret_cast<UInt8*>(bytes.data()),
                   size, nullptr);
  return bytes;
}

size_t displayWidth(const std::string& text) {
  static const bool utf8Locale = std::setlocale(LC_CTYPE, "C.UTF-8");
  if (!utf8Locale) return text.size();
  std::mbstate_t state{};
  size_t width = 0;
  for (size_t i = 0; i < text.size();) {
    wchar_t character = 0;
    const size_t length = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
    if (length == 0 || length > text.size() - i) {
      state = {};
      ++width;
      ++i;
      continue;
    }
    width += static_cast<size_t>(std::max(0, wcwidth(character)));
    i += length;
  }
  return width;
}

}  // namespace shotlight
