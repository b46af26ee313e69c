// Bytes that become text: contents of files, strings of the host and of the platform in their encodings, and
// what is shown of text on a terminal.
//
// The input: a byte that says which of them, one for the encoding, and the bytes.
#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "standin/coreservices/files/text_content.h"
#include "standin/gate/gate.h"
#include "standin/gate/shown_text.h"
#include "standin/host/language/encodings.h"

namespace {

namespace host = standin::host;

void readFile(std::string_view bytes) {
  using standin::metadata::textOfBytes;
  const std::optional<std::string> text = textOfBytes(bytes);
  if (!text) return;
  fuzz::require(text->find('\0') == std::string::npos, "a file's text with a zero byte");
  fuzz::require(text->find("  ") == std::string::npos, "a file's text with two blanks");
  fuzz::require(text->starts_with("\xEF\xBB\xBF") || textOfBytes(*text) == text,
                "a file's text that is none");
}

void convertForHost(std::string_view bytes, uint8_t which) {
  constexpr uint32_t kEncodings[] = {host::kEncodingMacRoman,
                                     host::kEncodingUtf16,
                                     host::kEncodingWindowsLatin1,
                                     host::kEncodingAscii,
                                     host::kEncodingUtf8,
                                     host::kEncodingUtf32,
                                     host::kEncodingUnknown,
                                     0x0201,
                                     0x0A01};
  const uint32_t from = kEncodings[which % std::size(kEncodings)];
  const uint32_t to = kEncodings[which / std::size(kEncodings) % std::size(kEncodings)];
  const std::optional<std::string> converted = host::convert(bytes, from, to);
  if (!converted) return;
  const auto back = host::convert(*converted, to, host::kEncodingUtf8);
  fuzz::require(back == host::convert(bytes, from, host::kEncodingUtf8),
                "a text that is another one when converted");
}

void makePlatformString(std::string_view bytes, uint8_t which) {
  constexpr CFStringEncoding kEncodings[] = {kCFStringEncodingUTF8,
                                             kCFStringEncodingMacRoman,
                                             0x0100,
                                             0x10000100,
                                             0x14000100,
                                             0x0C000100,
                                             0x0201,
                                             0x0A01,
                                             0x0BFF,
                                             0x0600,
                                             0x0500};
  const CFStringEncoding encoding = kEncodings[which % std::size(kEncodings)];
  const auto* const data = reinterpret_cast<const UInt8*>(bytes.data());
  const CFStringRef text =
      CFStringCreateWithBytes(nullptr, data, static_cast<CFIndex>(bytes.size()), encoding, which & 0x80);
  if (!text) return;
  const CFMutableStringRef changed = CFStringCreateMutableCopy(nullptr, 0, text);
  CFStringNormalize(changed, kCFStringNormalizationFormD);
  const CFIndex most = CFStringGetMaximumSizeForEncoding(CFStringGetLength(changed), encoding) + 1;
  std::string buffer(static_cast<size_t>(most), 'x');
  CFStringGetCString(changed, buffer.data(), most, encoding);
  CFStringCompare(text, changed, kCFCompareCaseInsensitive);
  CFRelease(changed);
  CFRelease(text);
}

void show(std::string_view bytes) {
  const std::string shown = standin::shownText(bytes);
  for (size_t i = 0; i < shown.size();) {
    const standin::Character character = standin::characterAt(shown, i);
    fuzz::require(!standin::disturbs(character), "a character that a terminal obeys");
    i += character.length;
  }
}

}  // namespace

// What was freed is freed at once: kept for a while, it would be looked for as a leak after each run.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  standin::setFreedBytesKept(0);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t kind = input.byte();
  const uint8_t which = input.byte();
  const std::string_view bytes = input.rest();
  switch (kind % 4) {
    case 0:
      readFile(bytes);
      break;
    case 1:
      convertForHost(bytes, which);
      break;
    case 2:
      makePlatformString(bytes, which);
      break;
    default:
      show(bytes);
  }
  return 0;
}
