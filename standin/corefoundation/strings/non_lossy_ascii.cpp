#include "standin/corefoundation/strings/non_lossy_ascii.h"

#include <charconv>
#include <initializer_list>

namespace cf {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

// The number of exactly `count` digits at the front; -1 when there are fewer, or another character.
int32_t numberAt(std::string_view text, size_t count, int base) {
  if (text.size() < count) return -1;
  uint32_t number = 0;  // unsigned, so that no sign is read
  const char* const end = text.data() + count;
  const auto [stop, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && stop == end ? static_cast<int32_t>(number) : -1;
}

int32_t escapedUnit(std::string_view& rest) {
  constexpr size_t kOctal = 3;
  constexpr size_t kHex = 4;
  if (rest.starts_with("\\\\")) {
    rest.remove_prefix(2);
    return '\\';
  }
  if (rest.starts_with("\\u")) {
    const int32_t unit = numberAt(rest.substr(2), kHex, 16);
    if (unit >= 0) rest.remove_prefix(2 + kHex);
    return unit;
  }
  const int32_t unit = numberAt(rest.substr(1), kOctal, 8);
  if (unit < 0 || unit > 0xFF) return -1;
  rest.remove_prefix(1 + kOctal);
  return unit;
}

}  // namespace

int32_t takeNonLossyUnit(std::string_view& rest) {
  if (rest.front() == '\\') {
    const int32_t unit = escapedUnit(rest);
    if (unit >= 0) return unit;
  }
  const char c = rest.front();
  rest.remove_prefix(1);
  return (c & 0x80) != 0 ? -1 : c;
}

size_t putNonLossyUnit(UniChar unit, UInt8* out) {
  const auto put = [out](std::initializer_list<int> bytes) {
    size_t length = 0;
    for (const int byte : bytes) out[length++] = static_cast<UInt8>(byte);
    return length;
  };
  if (unit == '\\') return put({'\\', '\\'});
  if (unit < 0x80) return put({unit});
  if (unit <= 0xFF) return put({'\\', kDigits[unit >> 6], kDigits[unit >> 3 & 7], kDigits[unit & 7]});
  return put(
      {'\\', 'u', kDigits[unit >> 12], kDigits[unit >> 8 & 15], kDigits[unit >> 4 & 15], kDigits[unit & 15]});
}

}  // namespace cf
