// Between file names and the paths of URLs.
#include "standin/corefoundation/string_normalize.h"
#include "standin/corefoundation/url.h"

namespace cf {
namespace {

bool standsForItself(unsigned char c) {
  if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return true;
  return c != 0 && std::string_view("!$&'()*+,-./:=@_~").find(static_cast<char>(c)) != std::string_view::npos;
}

int hexValue(char c) {
  return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
}

// The file system decomposes all but three ranges, whose characters would not survive the way back. Kept for
// the life of the process; null without ICU's data.
const UNormalizer2* fileNameNormalizer() {
  static const UNormalizer2* const normalizer = []() -> const UNormalizer2* {
    USet* const affected = copyKnownCharacters();
    if (affected == nullptr) return nullptr;
    uset_removeRange(affected, 0x2000, 0x2FFF);
    uset_removeRange(affected, 0xF900, 0xFAFF);
    uset_removeRange(affected, 0x2F800, 0x2FAFF);
    uset_freeze(affected);
    return normalizerFor(kCFStringNormalizationFormD, affected);
  }();
  return normalizer;
}

}  // namespace

std::string escapePath(std::string_view bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string escaped;
  escaped.reserve(bytes.size() + 16);
  for (const char c : bytes) {
    const unsigned char byte = static_cast<unsigned char>(c);
    if (standsForItself(byte)) {
      escaped += c;
    } else {
      escaped += '%';
      escaped += digits[byte >> 4];
      escaped += digits[byte & 15];
    }
  }
  return escaped;
}

std::string unescape(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      bytes += static_cast<char>(hexValue(text[i + 1]) << 4 | hexValue(text[i + 2]));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

std::optional<std::string> utf8Of(Text text) {
  if (text.narrow) return std::string(text.narrow, text.length);
  std::string bytes(text.length * 3, '\0');
  const Encoded done =
      encode(text, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(bytes.data()), bytes.size());
  if (done.units != text.length) return std::nullopt;
  bytes.resize(done.bytes);
  return bytes;
}

std::optional<std::string> fileNameOf(Text text) {
  if (text.narrow || isASCII(text.wide, text.length)) return utf8Of(text);
  const UNormalizer2* const normalizer = fileNameNormalizer();
  if (normalizer == nullptr) return std::nullopt;
  const UChar* const units = reinterpret_cast<const UChar*>(text.wide);
  const int32_t length = static_cast<int32_t>(text.length);
  constexpr size_t kGrowth = 4;  // no character's decomposition has more units for each of its own
  std::u16string result(text.length * kGrowth, u'\0');
  UErrorCode error = U_ZERO_ERROR;
  const int32_t written =
      unorm2_normalize(normalizer, units, length, result.data(), static_cast<int32_t>(result.size()), &error);
  if (U_FAILURE(error)) return std::nullopt;
  return utf8Of({nullptr, reinterpret_cast<const UniChar*>(result.data()), static_cast<size_t>(written)});
}

}  // namespace cf
