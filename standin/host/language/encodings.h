// The encodings that host strings come in, and texts changed from one into another.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standin::host {

// Encodings have Core Foundation's numbers.
constexpr uint32_t kEncodingMacRoman = 0;
constexpr uint32_t kEncodingUtf16 = 0x0100;  // of the machine's byte order
constexpr uint32_t kEncodingWindowsLatin1 = 0x0500;
constexpr uint32_t kEncodingAscii = 0x0600;
constexpr uint32_t kEncodingUtf8 = 0x08000100;
constexpr uint32_t kEncodingUtf32 = 0x0C000100;
constexpr uint32_t kEncodingUnknown = 0xFFFF;

// Whether the bytes are text of ASCII alone, in an encoding that writes each of its characters as one byte.
bool isAsciiText(std::string_view bytes, uint32_t encoding);

// Text that is not well-formed in its encoding, a character that the target lacks, or an encoding that the
// host does not know: no result. kEncodingUnknown is read as MacRoman.
std::optional<std::string> convert(std::string_view bytes, uint32_t from, uint32_t to);

}  // namespace standin::host
