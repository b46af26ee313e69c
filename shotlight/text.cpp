#include "shotlight/text.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <type_traits>

namespace shotlight {
namespace {

struct Release {
  void operator()(CFTypeRef value) const { CFRelease(value); }
};
using String = std::unique_ptr<const std::remove_pointer_t<CFStringRef>, Release>;

struct Character {
  wchar_t code;
  size_t length;  // in bytes
  bool valid;     // otherwise one byte that is no UTF-8
};

Character characterAt(const std::string& text, size_t index) {
  static const bool utf8Locale = std::setlocale(LC_CTYPE, "C.UTF-8");
  std::mbstate_t state{};
  wchar_t code = 0;
  const size_t left = text.size() - index;
  const size_t length = utf8Locale ? std::mbrtowc(&code, text.data() + index, left, &state) : 0;
  if (length > 0 && length <= left) return {code, length, true};
  const auto byte = static_cast<unsigned char>(text[index]);
  return {byte, 1, byte < 0x80};
}

// Where the run of ASCII's printable characters ends that starts at `index`.
size_t endOfPlain(const std::string& text, size_t index) {
  const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
  const auto start = text.begin() + static_cast<ptrdiff_t>(index);
  return static_cast<size_t>(std::find_if_not(start, text.end(), isPlain) - text.begin());
}

// The second set of control characters, the separators of lines and paragraphs, and what turns the direction.
bool disturbs(wchar_t code) {
  return (code >= 0x80 && code < 0xA0) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

std::string hex(const char* format, unsigned value) {
  char text[16];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

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
  size_t width = 0;
  for (size_t i = 0; i < text.size();) {
    if (const size_t end = endOfPlain(text, i); end > i) {
      width += end - i;
      i = end;
      continue;
    }
    const Character character = characterAt(text, i);
    width += character.valid ? static_cast<size_t>(std::max(0, wcwidth(character.code))) : 1;
    i += character.length;
  }
  return width;
}

std::string escapeControls(const std::string& utf8) {
  std::string result;
  for (size_t i = 0; i < utf8.size();) {
    if (const size_t end = endOfPlain(utf8, i); end > i) {
      result.append(utf8, i, end - i);
      i = end;
      continue;
    }
    const Character character = characterAt(utf8, i);
    if (character.code == L'\t') {
      result += "\\t";
    } else if (character.code == L'\n') {
      result += "\\n";
    } else if (!character.valid || character.code < 0x20 || character.code == 0x7F) {
      result += hex("\\x%02X", static_cast<unsigned char>(utf8[i]));
    } else if (disturbs(character.code)) {
      result += hex("\\u%04X", static_cast<unsigned>(character.code));
    } else {
      result.append(utf8, i, character.length);
    }
    i += character.length;
  }
  return result;
}

}  // namespace shotlight
