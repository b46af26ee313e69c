#include "standin/corefoundation/strings/decode.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/strings/encodings.h"
#include "standin/corefoundation/strings/icu_encodings.h"
#include "standin/corefoundation/strings/non_lossy_ascii.h"
#include "standin/gate/memory.h"

namespace cf {
namespace {

using Bytes = std::span<const UInt8>;

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};
using UnitBlock = std::unique_ptr<UniChar[], FreeBlock>;

// Where the decoders write: room for one unit per byte, which no encoding exceeds.
class Units {
 public:
  explicit Units(size_t room) : room_(room), heap_(room > kInline ? allocate(room) : nullptr) {
    begin_ = room > kInline ? heap_.get() : inline_;
    end_ = begin_;
  }
  bool good() const { return begin_ != nullptr; }
  void push(uint32_t codePoint) {
    if (codePoint >= 0x10000) {
      *end_++ = static_cast<UniChar>(0xD7C0 + (codePoint >> 10));
      *end_++ = static_cast<UniChar>(0xDC00 | (codePoint & 0x3FF));
    } else {
      *end_++ = static_cast<UniChar>(codePoint);
    }
  }
  // What the converter makes of the bytes becomes the text; false when it stops before their end.
  bool convert(UConverter* converter, Bytes bytes) {
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(
        converter, reinterpret_cast<UChar*>(begin_), static_cast<int32_t>(room_),
        reinterpret_cast<const char*>(bytes.data()), static_cast<int32_t>(bytes.size()), &error);
    if (U_FAILURE(error)) return false;
    end_ = begin_ + length;
    return true;
  }
  CFStringRef make() const { return makeString(begin_, static_cast<size_t>(end_ - begin_)); }

 private:
  static constexpr size_t kInline = 512;
  static UniChar* allocate(size_t room) {
    return static_cast<UniChar*>(standin::takeMemory([room] { return std::malloc(room * sizeof(UniChar)); }));
  }
  size_t room_;
  UnitBlock heap_;
  UniChar inline_[kInline];
  UniChar* begin_;
  UniChar* end_;
};

// One character from the front of `rest`, which it shortens; -1 when it is malformed.
int32_t nextUTF8(Bytes& rest) {
  const UInt8 lead = rest[0];
  if (lead < 0x80) {
    rest = rest.subspan(1);
    return lead;
  }
  const size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  if (length == 0 || rest.size() < length) return -1;
  int32_t c = lead & (0x7F >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((rest[i] & 0xC0) != 0x80) return -1;
    c = c << 6 | (rest[i] & 0x3F);
  }
  constexpr int32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (c < kSmallest[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return -1;
  rest = rest.subspan(length);
  return c;
}

bool decodeUTF8(Bytes bytes, Units& out) {
  constexpr UInt8 kMark[] = {0xEF, 0xBB, 0xBF};
  if (bytes.size() >= sizeof kMark && std::memcmp(bytes.data(), kMark, sizeof kMark) == 0) {
    bytes = bytes.subspan(sizeof kMark);
  }
  // The one malformed byte that is let through, as on the Mac: a copyright sign of other encodings.
  constexpr UInt8 kCopyright = 0xA9;
  while (!bytes.empty()) {
    if (bytes[0] == kCopyright) {
      out.push(0xFFFD);
      bytes = bytes.subspan(1);
      continue;
    }
    const int32_t c = nextUTF8(bytes);
    if (c < 0) return false;
    out.push(static_cast<uint32_t>(c));
  }
  return true;
}

uint32_t wordAt(Bytes bytes, size_t at, size_t width, bool bigEndian) {
  uint32_t word = 0;
  for (size_t i = 0; i < width; ++i) word = word << 8 | bytes[at + (bigEndian ? i : width - 1 - i)];
  return word;
}

// Part of a unit at the end is dropped.
bool decodeWords(Bytes bytes, size_t width, bool bigEndian, bool mayCarryMark, Units& out) {
  bytes = bytes.first(bytes.size() - bytes.size() % width);
  size_t at = 0;
  if (mayCarryMark && !bytes.empty()) {
    for (const bool order : {false, true}) {
      if (wordAt(bytes, 0, width, order) != 0xFEFF) continue;
      at = width;
      bigEndian = order;
    }
  }
  for (; at < bytes.size(); at += width) {
    const uint32_t word = wordAt(bytes, at, width, bigEndian);
    if (word > 0x10FFFF || (width == 4 && word >= 0xD800 && word < 0xE000)) return false;
    out.push(word);
  }
  return true;
}

bool decodeNonLossyASCII(Bytes bytes, Units& out) {
  std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (!rest.empty()) {
    const int32_t unit = takeNonLossyUnit(rest);
    if (unit < 0) return false;
    out.push(static_cast<uint32_t>(unit));
  }
  return true;
}

bool decodeSingleBytes(Bytes bytes, const UniChar* upper, Units& out) {
  for (const UInt8 byte : bytes) {
    const UniChar unit = byte < 0x80 ? byte : upper[byte - 0x80];
    if (unit == 0 && byte != 0) return false;
    out.push(unit);
  }
  return true;
}

// Without a byte order mark UTF-16 is in the processor's order, but UTF-32 big-endian.
bool decodeUnits(Bytes bytes, CFStringEncoding encoding, bool external, Units& out) {
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return decodeUTF8(bytes, out);
    case kCFStringEncodingASCII:  // high bytes are let through as they are, as the original does
      return decodeSingleBytes(bytes, upperHalf(kCFStringEncodingISOLatin1), out);
    case kCFStringEncodingUTF16:
      return decodeWords(bytes, 2, false, external, out);
    case kCFStringEncodingUTF16BE:
      return decodeWords(bytes, 2, true, false, out);
    case kCFStringEncodingUTF16LE:
      return decodeWords(bytes, 2, false, false, out);
    case kCFStringEncodingUTF32:
      return decodeWords(bytes, 4, true, true, out);
    case kCFStringEncodingUTF32BE:
      return decodeWords(bytes, 4, true, false, out);
    case kCFStringEncodingUTF32LE:
      return decodeWords(bytes, 4, false, false, out);
    case kCFStringEncodingNonLossyASCII:
      return decodeNonLossyASCII(bytes, out);
    default:
      if (UConverter* const converter = converterFor(encoding)) return out.convert(converter, bytes);
      const UniChar* const upper = upperHalf(encoding);
      return upper && decodeSingleBytes(bytes, upper, out);
  }
}

}  // namespace

CFStringRef decode(const UInt8* bytes, size_t length, CFStringEncoding encoding, bool external) {
  if (!isKnownEncoding(encoding) || length > kMaxStringLength) return nullptr;
  if (extendsASCII(encoding) && isASCII(bytes, length)) {
    return makeNarrowString(reinterpret_cast<const char*>(bytes), length);
  }
  Units units(length);
  if (!units.good() || !decodeUnits({bytes, length}, encoding, external, units)) return nullptr;
  return units.make();
}

CFStringRef stringOfUTF8(std::string_view bytes) {
  return decode(reinterpret_cast<const UInt8*>(bytes.data()), bytes.size(), kCFStringEncodingUTF8, false);
}

}  // namespace cf

using standin::Gate;

// Takes no length: the text ends at the first zero byte, in every encoding.
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr, CFStringEncoding encoding) {
  const Gate gate(__func__);
  if (cStr == nullptr) cf::misuse(__func__, "null text");
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::decode(reinterpret_cast<const UInt8*>(cStr), std::strlen(cStr), encoding, false);
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
  const Gate gate(__func__);
  cf::checkBuffer(bytes, numBytes, "bytes", __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::decode(bytes, static_cast<size_t>(numBytes), encoding, isExternalRepresentation);
}
