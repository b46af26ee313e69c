#include "standin/host/language/encodings.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace standin::host {
namespace {

using Upper = std::array<char16_t, 128>;  // the characters of the bytes 0x80 to 0xFF

// clang-format off
constexpr Upper kMacRoman = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3,
    0x00E5, 0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3,
    0x00A7, 0x2022, 0x00B6, 0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA,
    0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D,
    0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, 0x00CB, 0x00C8, 0x00CD, 0x00CE,
    0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};
// The five bytes without a character stand for the control characters of the same number.
constexpr Upper kWindowsLatin1 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039,
    0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178, 0x00A0, 0x00A1, 0x00A2, 0x00A3,
    0x00A4, 0x00A5, 0x00A6, 0x00A7, 0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x00B9, 0x00BA, 0x00BB,
    0x00BC, 0x00BD, 0x00BE, 0x00BF, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7,
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3,
    0x00D4, 0x00D5, 0x00D6, 0x00D7, 0x00D8, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF,
    0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB,
    0x00EC, 0x00ED, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00F7,
    0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x00FF,
};
// clang-format on

using Characters = std::optional<std::u32string>;
using Bytes = std::optional<std::string>;

bool isSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

Characters decodeTable(std::string_view bytes, const Upper* upper) {
  std::u32string text;
  for (const unsigned char byte : bytes) {
    if (byte >= 0x80 && !upper) return {};
    text += byte < 0x80 ? byte : (*upper)[byte - 0x80];
  }
  return text;
}

Bytes encodeTable(const std::u32string& text, const Upper* upper) {
  std::string bytes;
  for (const char32_t c : text) {
    if (c < 0x80) {
      bytes += static_cast<char>(c);
      continue;
    }
    if (!upper) return {};
    const auto found = std::find(upper->begin(), upper->end(), c);
    if (found == upper->end()) return {};
    bytes += static_cast<char>(0x80 + std::distance(upper->begin(), found));
  }
  return bytes;
}

// How many bytes follow a lead byte, and the least character that may be written so.
bool leadByte(unsigned char lead, int& follow, char32_t& bits, char32_t& least) {
  if (lead >= 0xC2 && lead <= 0xDF) {
    follow = 1, bits = lead & 0x1F, least = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    follow = 2, bits = lead & 0x0F, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    follow = 3, bits = lead & 0x07, least = 0x10000;
  } else {
    return false;
  }
  return true;
}

Characters decodeUtf8(std::string_view bytes) {
  std::u32string text;
  for (size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i++]);
    int follow = 0;
    char32_t c = lead, least = 0;
    if (lead >= 0x80 && !leadByte(lead, follow, c, least)) return {};
    for (; follow > 0; --follow) {
      if (i == bytes.size() || (bytes[i] & 0xC0) != 0x80) return {};
      c = c << 6 | (bytes[i++] & 0x3F);
    }
    if (c < least || c > 0x10FFFF || isSurrogate(c)) return {};
    text += c;
  }
  return text;
}

Bytes encodeUtf8(const std::u32string& text) {
  std::string bytes;
  const auto put = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
  for (const char32_t c : text) {
    if (c < 0x80) {
      put(c);
      continue;
    }
    if (c < 0x800) {
      put(0xC0 | c >> 6);
    } else {
      if (c < 0x10000) {
        put(0xE0 | c >> 12);
      } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
      }
      put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
  }
  return bytes;
}

Characters decodeUtf16(std::string_view bytes) {
  if (bytes.size() % 2 != 0) return {};
  std::u16string units(bytes.size() / 2, 0);
  std::memcpy(units.data(), bytes.data(), bytes.size());
  std::u32string text;
  for (size_t i = 0; i < units.size(); ++i) {
    char32_t c = units[i];
    if (isSurrogate(c)) {
      const bool pair = c < 0xDC00 && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00;
      if (!pair) return {};
      c = 0x10000 + ((c - 0xD800) << 10) + (units[++i] - 0xDC00);
    }
    text += c;
  }
  return text;
}

Bytes encodeUtf16(const std::u32string& text) {
  std::u16string units;
  for (const char32_t c : text) {
    if (c < 0x10000) {
      units += static_cast<char16_t>(c);
    } else {
      units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
  }
  return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

Characters decodeUtf32(std::string_view bytes) {
  if (bytes.size() % 4 != 0) return {};
  std::u32string text(bytes.size() / 4, 0);
  std::memcpy(text.data(), bytes.data(), bytes.size());
  const auto bad = [](char32_t c) { return c > 0x10FFFF || isSurrogate(c); };
  if (std::any_of(text.begin(), text.end(), bad)) return {};
  return text;
}

// Whether a byte below 0x80 is a character of ASCII, and each of those is that byte.
bool extendsAscii(uint32_t encoding) {
  switch (encoding) {
    case kEncodingMacRoman:
    case kEncodingUnknown:
    case kEncodingWindowsLatin1:
    case kEncodingAscii:
    case kEncodingUtf8:
      return true;
    default:
      return false;
  }
}

Characters decode(std::string_view bytes, uint32_t encoding) {
  switch (encoding) {
    case kEncodingMacRoman:
    case kEncodingUnknown:
      return decodeTable(bytes, &kMacRoman);
    case kEncodingWindowsLatin1:
      return decodeTable(bytes, &kWindowsLatin1);
    case kEncodingAscii:
      return decodeTable(bytes, nullptr);
    case kEncodingUtf8:
      return decodeUtf8(bytes);
    case kEncodingUtf16:
      return decodeUtf16(bytes);
    case kEncodingUtf32:
      return decodeUtf32(bytes);
    default:
      return {};
  }
}

Bytes encode(const std::u32string& text, uint32_t encoding) {
  switch (encoding) {
    case kEncodingMacRoman:
      return encodeTable(text, &kMacRoman);
    case kEncodingWindowsLatin1:
      return encodeTable(text, &kWindowsLatin1);
    case kEncodingAscii:
      return encodeTable(text, nullptr);
    case kEncodingUtf8:
      return encodeUtf8(text);
    case kEncodingUtf16:
      return encodeUtf16(text);
    case kEncodingUtf32:
      return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 4);
    default:
      return {};
  }
}

}  // namespace

bool isAsciiText(std::string_view bytes, uint32_t encoding) {
  if (!extendsAscii(encoding)) return false;
  // Several bytes at once, the rest one by one.
  size_t i = 0;
  for (uint64_t some = 0; i + sizeof some <= bytes.size(); i += sizeof some) {
    std::memcpy(&some, bytes.data() + i, sizeof some);
    if ((some & 0x8080808080808080) != 0) return false;
  }
  const auto rest = bytes.substr(i);
  return std::none_of(rest.begin(), rest.end(), [](char byte) { return (byte & 0x80) != 0; });
}

std::optional<std::string> convert(std::string_view bytes, uint32_t from, uint32_t to) {
  // Nearly all text is ASCII, which most encodings write alike.
  if (to != kEncodingUnknown && extendsAscii(to) && isAsciiText(bytes, from)) return std::string(bytes);
  const auto text = decode(bytes, from);
  return text ? encode(*text, to) : std::nullopt;
}

}  // namespace standin::host
