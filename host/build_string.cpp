#include "build_string.h"

#include "exceptions.h"
#include "services.h"

namespace {

const int32_t kMaxStackUTF32Bytes = 799;  // UTF-32 up to this long is narrowed on the stack

bool isASCII(const char* bytes, int32_t length) {
  for (int32_t i = 0; i < length; ++i) {
    if (bytes[i] & 0x80) return false;
  }
  return true;
}

// UTF-16 text is stored as UTF-8.
Owned<REALstring> buildFromUTF16(const void* units, int32_t length) {
  auto wide = buildPlainString(static_cast<const char*>(units), length, kCFStringEncodingUnicode);
  if (!wide) return {};
  auto string = adopt(REALConvertString(wide.get(), kCFStringEncodingUTF8));
  wide.reset();
  return string;
}

// Units above 0xFFFF are cut, not made into surrogate pairs. The low half of a unit comes first: the machine
// is little-endian.
void narrowUTF32(const char* bytes, int32_t count, UniChar* units) {
  for (int32_t i = 0; i < count; ++i) memcpy(&units[i], bytes + i * 4, sizeof units[i]);
}

Owned<REALstring> buildFromUTF32(const char* bytes, int32_t length) {
  const int32_t count = length / 4;
  if (length <= kMaxStackUTF32Bytes) {
    UniChar units[kMaxStackUTF32Bytes / 4];
    narrowUTF32(bytes, count, units);
    return buildFromUTF16(units, count * 2);
  }
  const auto block = allocateZeroed(int64_t{count} * 2 + 4);
  if (!block) return {};
  narrowUTF32(bytes, count, reinterpret_cast<UniChar*>(block.get()));
  return buildFromUTF16(block.get(), count * 2);
}

Owned<REALstring> build(const char* bytes, int32_t length, uint32_t encoding) {
  switch (encoding) {
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingWindowsLatin1:
    case kUnknownEncoding:
      if (isASCII(bytes, length)) encoding = kCFStringEncodingASCII;
      return buildPlainString(bytes, length, encoding);
    case kCFStringEncodingUnicode:
      return buildFromUTF16(bytes, length);
    case kCFStringEncodingUTF32:
      return buildFromUTF32(bytes, length);
    default:
      return buildPlainString(bytes, length, encoding);
  }
}

}  // namespace

// The exception's message is a host string as well. If memory runs out again while that is built, the message
// is left out, and no second exception is raised.
void raiseOutOfMemory() {
  static bool raising = false;
  struct RaisingScope {
    RaisingScope() { raising = true; }
    ~RaisingScope() { raising = false; }
  };
  if (raising) return;
  const RaisingScope scope;
  RaiseException("OutOfMemoryException", "Failed to allocate memory for a string.");
}

Owned<REALstring> REALBuildUnicodeString(const void* data, int64_t length, uint32_t encoding) {
  if (!data || length <= 0 || length > INT32_MAX) return {};
  try {
    return build(static_cast<const char*>(data), static_cast<int32_t>(length), encoding);
  } catch (const std::bad_alloc&) {
    raiseOutOfMemory();
    return {};
  }
}
