#include "shotlight/text.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <type_traits>

#include "standin/gate/shown_text.h"

namespace shotlight {
namespace {

struct Release {
  void operator()(CFTypeRef value) const { CFRelease(value); }
};
using String = std::unique_ptr<const std::remove_pointer_t<CFStringRef>, Release>;

using standin::Character;
using standin::characterAt;

const char kEllipsis[] = "\u2026";  // one column wide

// Where the run of ASCII's printable characters ends that starts at `index`.
size_t endOfPlain(std::string_view text, size_t index) {
  const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F; };
  const auto start = text.begin() + static_cast<ptrdiff_t>(index);
  return static_cast<size_t>(std::find_if_not(start, text.end(), isPlain) - text.begin());
}

// Columns that a character takes. The C library knows them in a locale of UTF-8 only.
size_t widthOf(const Character& character) {
  if (!character.valid || !knowCharacters()) return 1;
  return static_cast<size_t>(std::max(0, wcwidth(static_cast<wchar_t>(character.code))));
}

// The first characters that fit, with the combining ones that follow the last; or the last ones.
std::string_view startThatFits(std::string_view text, size_t width) {
  size_t end = 0;
  for (size_t taken = 0; end < text.size();) {
    const Character character = characterAt(text, end);
    taken += widthOf(character);
    if (taken > width) break;
    end += character.length;
  }
  return text.substr(0, end);
}

std::string_view endThatFits(std::string_view text, size_t width) {
  size_t left = displayWidth(text);
  size_t start = 0;
  // What combines with a character that was cut off goes with it.
  for (bool cutOff = false; start < text.size();) {
    const Character character = characterAt(text, start);
    const size_t columns = widthOf(character);
    if (left <= width && !(cutOff && columns == 0)) break;
    left -= columns;
    start += character.length;
    cutOff = true;
  }
  return text.substr(start);
}

// Text in other encodings than UTF-8, but for its control characters.
bool isForPrograms(const Character& character) {
  return !character.valid && character.code >= 0xA0;
}

bool needsEscapes(std::string_view text, Reader reader) {
  if (text.starts_with("$'")) return true;
  for (size_t i = endOfPlain(text, 0); i < text.size(); i = endOfPlain(text, i)) {
    const Character character = characterAt(text, i);
    if (disturbs(character) && (reader == Reader::person || !isForPrograms(character))) return true;
    i += character.length;
  }
  return false;
}

std::string escapedWord(std::string_view text) {
  std::string word = "$'";
  for (size_t i = 0; i < text.size();) {
    const Character character = characterAt(text, i);
    const std::string_view bytes = text.substr(i, character.length);
    i += character.length;
    switch (character.code) {
      case U'\t':
        word += "\\t";
        continue;
      case U'\n':
        word += "\\n";
        continue;
      case U'\'':
      case U'\\':
        word += '\\';
        break;
      default:
        break;
    }
    if (!disturbs(character)) {
      word += bytes;
      continue;
    }
    for (const char byte : bytes) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", static_cast<unsigned>(static_cast<unsigned char>(byte)));
      word += escape;
    }
  }
  return word + '\'';
}

}  // namespace

bool knowCharacters() {
  static const bool known = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  return known;
}

size_t endOfValid(std::string_view text) {
  size_t at = 0;
  while (at < text.size()) {
    const Character character = characterAt(text, at);
    if (!character.valid) break;
    at += character.length;
  }
  return at;
}

std::optional<std::u16string> utf16(const std::string& utf8) {
  // Core Foundation lets through some bytes that are no character.
  if (endOfValid(utf8) < utf8.size()) return std::nullopt;
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

size_t displayWidth(std::string_view text) {
  size_t width = 0;
  for (size_t i = 0; i < text.size();) {
    if (const size_t end = endOfPlain(text, i); end > i) {
      width += end - i;
      i = end;
      continue;
    }
    const Character character = characterAt(text, i);
    width += widthOf(character);
    i += character.length;
  }
  return width;
}

std::string cutToWidth(const std::string& text, size_t width, Cut cut) {
  if (displayWidth(text) <= width) return text;
  if (width == 0) return {};
  const size_t endWidth = cut == Cut::middle ? (width - 1) / 2 : 0;
  return std::string(startThatFits(text, width - 1 - endWidth)) + kEllipsis +
         std::string(endThatFits(text, endWidth));
}

std::string shellWord(std::string_view text, Reader reader) {
  const bool endsInSpace = text.starts_with(' ') || text.ends_with(' ');
  const bool escapes = needsEscapes(text, reader) || (reader == Reader::person && endsInSpace);
  return escapes ? escapedWord(text) : std::string(text);
}

std::string quotedName(std::string_view name) {
  const bool isPlain = name.find('\'') == std::string_view::npos && !needsEscapes(name, Reader::person);
  return isPlain ? '\'' + std::string(name) + '\'' : escapedWord(name);
}

}  // namespace shotlight
