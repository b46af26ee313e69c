// One encoder for each family of encodings, each writing one character at a time.
#include "standin/corefoundation/strings/encode.h"

#include <cstring>

#include "standin/corefoundation/strings/encodings.h"
#include "standin/corefoundation/strings/icu_encodings.h"
#include "standin/corefoundation/strings/non_lossy_ascii.h"

namespace cf {
namespace {

struct Character {
  uint32_t codePoint;
  size_t units;
  bool paired;  // false: a surrogate without its partner
};

Character characterAt(Text text, size_t at) {
  const uint32_t unit = text[at];
  if (unit < 0xD800 || unit >= 0xE000) return {unit, 1, true};
  if (unit < 0xDC00 && at + 1 < text.length) {
    const uint32_t next = text[at + 1];
    if (next >= 0xDC00 && next < 0xE000)
      return {0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00), 2, true};
  }
  return {unit, 1, false};
}

using Form = UInt8[2 * kLongestNonLossyUnit];

struct Units {
  UniChar units[2];
  size_t count;
};

Units unitsOf(const Character& c) {
  if (c.units == 1) return {{static_cast<UniChar>(c.codePoint)}, 1};
  const uint32_t high = 0xD7C0 + (c.codePoint >> 10);
  const uint32_t low = 0xDC00 | (c.codePoint & 0x3FF);
  return {{static_cast<UniChar>(high), static_cast<UniChar>(low)}, 2};
}

size_t putUTF8(uint32_t c, Form out) {
  if (c < 0x80) {
    out[0] = static_cast<UInt8>(c);
    return 1;
  }
  const size_t length = c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
  for (size_t i = length - 1; i > 0; --i, c >>= 6) out[i] = static_cast<UInt8>(0x80 | (c & 0x3F));
  constexpr UInt8 kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
  out[0] = static_cast<UInt8>(kLeads[length] | c);
  return length;
}

size_t putWord(uint32_t word, size_t width, bool bigEndian, UInt8* out) {
  for (size_t i = 0; i < width; ++i) {
    out[bigEndian ? width - 1 - i : i] = static_cast<UInt8>(word >> (8 * i));
  }
  return width;
}

// UTF-16 keeps what it is given, unpaired surrogates too.
size_t putUTF16(const Character& c, bool bigEndian, Form out) {
  const Units text = unitsOf(c);
  size_t length = 0;
  for (size_t i = 0; i < text.count; ++i) length += putWord(text.units[i], 2, bigEndian, out + length);
  return length;
}

size_t putNonLossyASCII(const Character& c, Form out) {
  const Units text = unitsOf(c);
  size_t length = 0;
  for (size_t i = 0; i < text.count; ++i) length += putNonLossyUnit(text.units[i], out + length);
  return length;
}

size_t putByICU(const Character& c, UConverter* converter, Form out) {
  const Units text = unitsOf(c);
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length =
      ucnv_fromUChars(converter, reinterpret_cast<char*>(out), sizeof(Form),
                      reinterpret_cast<const UChar*>(text.units), static_cast<int32_t>(text.count), &error);
  return U_SUCCESS(error) ? static_cast<size_t>(length) : 0;
}

size_t putSingleByte(const Character& c, CFStringEncoding encoding, Form out) {
  if (c.codePoint < 0x80) {
    out[0] = static_cast<UInt8>(c.codePoint);
    return 1;
  }
  const UniChar* const upper = upperHalf(encoding);
  if (upper == nullptr || c.codePoint > 0xFFFF) return 0;
  const int byte = singleByteFor(upper, static_cast<UniChar>(c.codePoint));
  if (byte < 0) return 0;
  out[0] = static_cast<UInt8>(byte);
  return 1;
}

// The bytes of one character; 0 when it has no form in the encoding.
size_t put(const Character& c, CFStringEncoding encoding, Form out) {
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return c.paired ? putUTF8(c.codePoint, out) : 0;
    case kCFStringEncodingUTF16:
    case kCFStringEncodingUTF16LE:
      return putUTF16(c, false, out);
    case kCFStringEncodingUTF16BE:
      return putUTF16(c, true, out);
    case kCFStringEncodingUTF32:
    case kCFStringEncodingUTF32LE:
      return c.paired ? putWord(c.codePoint, 4, false, out) : 0;
    case kCFStringEncodingUTF32BE:
      return c.paired ? putWord(c.codePoint, 4, true, out) : 0;
    case kCFStringEncodingNonLossyASCII:
      return putNonLossyASCII(c, out);
    default:
      UConverter* const converter = c.codePoint < 0x80 ? nullptr : converterFor(encoding);
      return converter ? putByICU(c, converter, out) : putSingleByte(c, encoding, out);
  }
}

// The byte order mark that opens external text of an encoding whose order isn't fixed.
size_t putMark(CFStringEncoding encoding, bool external, Form out) {
  if (!external) return 0;
  if (encoding == kCFStringEncodingUTF16) return putWord(0xFEFF, 2, false, out);
  if (encoding == kCFStringEncodingUTF32) return putWord(0xFEFF, 4, false, out);
  return 0;
}

class Sink {
 public:
  Sink(UInt8* out, size_t room) : out_(out), room_(room) {}
  bool add(const UInt8* bytes, size_t length) {
    if (out_ && length > room_ - used_) return false;
    if (out_ && length > 0) std::memcpy(out_ + used_, bytes, length);
    used_ += length;
    return true;
  }
  size_t used() const { return used_; }

 private:
  UInt8* out_;
  size_t room_;
  size_t used_ = 0;
};

}  // namespace

Encoded encode(Text text, CFStringEncoding encoding, UInt8 lossByte, bool external, UInt8* out, size_t room) {
  if (!isKnownEncoding(encoding)) return {0, 0};
  Sink sink(out, room);
  if (text.narrow && extendsASCII(encoding) &&
      sink.add(reinterpret_cast<const UInt8*>(text.narrow), text.length)) {
    return {text.length, text.length};
  }
  Form form;
  if (!sink.add(form, putMark(encoding, external, form))) return {0, 0};
  size_t at = 0;
  while (at < text.length) {
    Character c = characterAt(text, at);
    size_t length = put(c, encoding, form);
    if (length == 0) {
      if (lossByte == 0) return {at, sink.used()};
      c.units = 1;  // each half of a pair is lost for itself
      const Character substitute{lossByte, 1, true};
      length = put(substitute, encoding, form);
    }
    if (!sink.add(form, length)) return {at, sink.used()};
    at += c.units;
  }
  return {at, sink.used()};
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

}  // namespace cf
