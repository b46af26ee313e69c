// The public functions that give a string's bytes.
#include <climits>

#include "standin/corefoundation/strings/encode.h"
#include "standin/corefoundation/strings/encodings.h"
#include "standin/corefoundation/strings/icu_encodings.h"
#include "standin/corefoundation/strings/non_lossy_ascii.h"

namespace cf {
namespace {

// Bytes per unit at most. A byte order mark isn't counted, as on the Mac.
CFIndex mostBytesPerUnit(CFStringEncoding encoding) {
  switch (encoding) {
    case kCFStringEncodingUTF8:
      return 3;
    case kCFStringEncodingUTF16:
    case kCFStringEncodingUTF16BE:
    case kCFStringEncodingUTF16LE:
      return 2;
    case kCFStringEncodingUTF32:
    case kCFStringEncodingUTF32BE:
    case kCFStringEncodingUTF32LE:
      return 4;
    case kCFStringEncodingNonLossyASCII:
      return kLongestNonLossyUnit;
    default:
      const UConverter* const converter = converterFor(encoding);
      return converter ? ucnv_getMaxCharSize(converter) : 1;
  }
}

Text slice(Text text, CFRange range) {
  const size_t start = static_cast<size_t>(range.location);
  if (text.narrow) text.narrow += start;
  if (text.wide) text.wide += start;
  text.length = static_cast<size_t>(range.length);
  return text;
}

}  // namespace
}  // namespace cf

using standin::Gate;

// The buffer holds the bytes and a zero byte, or the call fails.
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  if (buffer == nullptr) cf::misuse(__func__, "null buffer");
  if (gate.fails() || bufferSize < 1 || !cf::isKnownEncoding(encoding)) return false;
  const size_t room = static_cast<size_t>(bufferSize) - 1;
  const cf::Text text = cf::textOf(theString);
  const cf::Encoded done = cf::encode(text, encoding, 0, false, reinterpret_cast<UInt8*>(buffer), room);
  if (done.units != text.length) return false;
  buffer[done.bytes] = 0;
  return true;
}

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen,
                         CFIndex* usedBufLen) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  cf::checkRange(range, theString->length, __func__);
  if (buffer && maxBufLen < 0) cf::misuse(__func__, "a buffer size below 0");
  if (usedBufLen) *usedBufLen = 0;
  if (gate.fails()) return 0;
  const size_t room = buffer ? static_cast<size_t>(maxBufLen) : 0;
  const cf::Encoded done = cf::encode(cf::slice(cf::textOf(theString), range), encoding, lossByte,
                                      isExternalRepresentation, buffer, room);
  if (usedBufLen) *usedBufLen = static_cast<CFIndex>(done.bytes);
  return static_cast<CFIndex>(done.units);
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding) {
  const Gate gate(__func__);
  if (length < 0) cf::misuse(__func__, "a length below 0");
  if (gate.fails()) return 0;
  const CFIndex perUnit = cf::mostBytesPerUnit(encoding);
  if (length > LONG_MAX / perUnit) return kCFNotFound;
  return length * perUnit;
}
