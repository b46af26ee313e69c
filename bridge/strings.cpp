#include "strings.h"

#include <string.h>
#include <new>

#include "host/array_elements.h"
#include "host/exceptions.h"
#include "host/services.h"
#include "host/string_data.h"

namespace {

// A string of a host before 2012.0, as far as it is known.
struct OldString {
  void* unknown0;
  const char* buffer;  // the text starts one byte in; good while the string is locked
  void* unknown2;
  int32_t length;  // in bytes
};

const CFIndex kStackUnits = 99;          // a CFString up to this long is converted on the stack
const CFIndex kMaxUTF8BytesPerUnit = 6;  // of a UTF-16 unit, at the worst
const int32_t kStackUTF32Bytes = 799;    // UTF-32 up to this long is narrowed on the stack

Owned<CFStringRef> createCFString(const char* bytes, int32_t length, uint32_t encoding) {
  if (!bytes) return {};
  if (encoding == kCFStringEncodingUnicode) {
    return adopt(CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(bytes),
                                              length / 2));
  }
  return adopt(CFStringCreateWithCString(kCFAllocatorDefault, bytes, encoding));
}

// What was taken is given back before the text is returned: should the host throw then, the text is released.
Owned<CFStringRef> createCFStringFromBytes(REALstring string) {
  uint32_t encoding = REALGetStringEncoding(string);
  if (encoding == kUnknownEncoding) encoding = kCFStringEncodingMacRoman;
  if (rbversion < 2012.0) {
    auto locked = retain(string);
    if (!locked) return {};
    const auto old = reinterpret_cast<const OldString*>(string);
    auto text = createCFString(old->buffer ? old->buffer + 1 : nullptr, old->length, encoding);
    locked.reset();
    return text;
  }
  OwnStringData data(string);
  auto text = createCFString(data.bytes(), data.length(), encoding);
  data.reset();
  return text;
}

bool isASCII(const char* bytes, int32_t length) {
  for (int32_t i = 0; i < length; ++i) {
    if (bytes[i] & 0x80) return false;
  }
  return true;
}

Owned<REALstring> buildString(const char* bytes, int32_t length, uint32_t encoding) {
  auto string = adopt(REALBuildString(bytes, length));
  if (string) REALSetStringEncoding(string.get(), encoding);
  return string;
}

// Text of two-byte units is stored as UTF-8.
Owned<REALstring> buildFromUTF16(const void* units, int32_t length) {
  auto wide = buildString(static_cast<const char*>(units), length, kCFStringEncodingUnicode);
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
  if (length <= kStackUTF32Bytes) {
    UniChar units[kStackUTF32Bytes / 4];
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
      return buildString(bytes, length, encoding);
    case kCFStringEncodingUnicode:
      return buildFromUTF16(bytes, length);
    case kCFStringEncodingUTF32:
      return buildFromUTF32(bytes, length);
    default:
      return buildString(bytes, length, encoding);
  }
}

// The message of the exception is a string, too: while it is made, another lack of memory just leaves it out.
void raiseOutOfMemory() {
  static bool raising = false;
  struct Raising {
    Raising() { raising = true; }
    ~Raising() { raising = false; }
  };
  if (raising) return;
  const Raising now;
  RaiseException("OutOfMemoryException", "Failed to allocate memory for a string.");
}

Owned<REALstring> buildFromBuffer(CFStringRef text, char* buffer, CFIndex size) {
  if (!CFStringGetCString(text, buffer, size, kCFStringEncodingUTF8)) return {};
  return REALBuildUnicodeString(buffer, static_cast<int64_t>(strlen(buffer)), kCFStringEncodingUTF8);
}

}  // namespace

Owned<CFStringRef> RBString2CFString(REALstring string) {
  if (!string) return {};
  if (rbversion >= 2012.0) {
    auto text = adopt(REALCopyStringCFString(string, false));
    if (text) return text;
  }
  // The same host service on purpose, through a cell of its own.
  auto text = adopt(REALGetStringCFString(string, false));
  if (text) return text;
  return createCFStringFromBytes(string);
}

Owned<REALstring> CFString2RBString(CFStringRef text) {
  const CFIndex length = text ? CFStringGetLength(text) : 0;
  if (length <= 0) return {};
  if (length <= kStackUnits) {
    char buffer[601] = {};
    return buildFromBuffer(text, buffer, 600);
  }
  const int64_t size = int64_t{length} * kMaxUTF8BytesPerUnit;
  const auto buffer = allocateZeroed(size);
  if (!buffer) return {};
  return buildFromBuffer(text, buffer.get(), static_cast<CFIndex>(size));
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

// The string is given back before the variant is returned: should the host throw then, the variant is
// released.
Owned<REALobject> variantOf(Owned<REALstring> string) {
  auto variant = adopt(REALNewVariantString(string.get()));
  string.reset();
  return variant;
}

void AddStringArray(REALobject array, CFArrayRef strings) {
  const CFIndex count = CFArrayGetCount(strings);
  int32_t position = 0;
  for (CFIndex i = 0; i < count; ++i) {
    const auto text = static_cast<CFStringRef>(CFArrayGetValueAtIndex(strings, i));
    if (!text) continue;
    const auto string = CFString2RBString(text);
    REALInsertArrayValueString(array, position++, string.get());
  }
}

Owned<CFMutableArrayRef> NewCFStringArray(REALobject array) {
  if (!array) return {};
  const int32_t upperBound = REALGetArrayUBound(array);
  auto strings = adopt(CFArrayCreateMutable(kCFAllocatorDefault, upperBound + 2, &kCFTypeArrayCallBacks));
  if (!strings) return {};
  for (int32_t i = 0; i <= upperBound; ++i) {
    const auto string = handleAt(array, i, REALGetArrayString);
    const auto text = RBString2CFString(string.get());
    CFArrayAppendValue(strings.get(), text ? text.get() : CFSTR(""));
  }
  return strings;
}
