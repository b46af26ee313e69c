#include "strings.h"

#include "host/array_elements.h"
#include "host/build_string.h"
#include "host/services.h"
#include "host/string_data.h"

namespace {

// The part that is known of a string on hosts before 2012.0.
struct OldString {
  void* unknown0;
  const char* buffer;  // the text starts at its second byte; valid while the string is locked
  void* unknown2;
  int32_t length;  // in bytes
};

const CFIndex kMaxStackUnits = 99;  // a CFString up to this long, in UTF-16 units, is converted on the stack
const CFIndex kMaxUTF8BytesPerUnit = 6;  // more than a UTF-16 unit takes: there is room for the final zero

Owned<CFStringRef> createCFString(const char* bytes, int32_t length, uint32_t encoding) {
  if (!bytes) return {};
  if (encoding == kCFStringEncodingUnicode) {
    return adopt(CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(bytes),
                                              length / 2));
  }
  return adopt(CFStringCreateWithCString(kCFAllocatorDefault, bytes, encoding));
}

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
  ScopedStringData data(string);
  auto text = createCFString(data.bytes(), data.length(), encoding);
  data.reset();
  return text;
}

Owned<REALstring> buildFromBuffer(CFStringRef text, char* buffer, CFIndex size) {
  if (!CFStringGetCString(text, buffer, size, kCFStringEncodingUTF8)) return {};
  return buildUTF8String(buffer);
}

// Apart, so that the usual way stays short.
[[gnu::noinline]] Owned<REALstring> convertOnHeap(CFStringRef text, CFIndex length) {
  const int64_t size = int64_t{length} * kMaxUTF8BytesPerUnit;
  const auto buffer = allocateZeroed(size);
  if (!buffer) return {};
  return buildFromBuffer(text, buffer.get(), static_cast<CFIndex>(size));
}

}  // namespace

Owned<CFStringRef> convertOtherwise(REALstring string) {
  // The same host service once more on purpose, looked up on its own.
  auto text = adopt(REALGetStringCFString(string, false));
  if (text) return text;
  return createCFStringFromBytes(string);
}

Owned<REALstring> CFString2RBString(CFStringRef text) {
  const CFIndex length = text ? CFStringGetLength(text) : 0;
  if (length <= 0) return {};
  if (length > kMaxStackUnits) return convertOnHeap(text, length);
  char buffer[601] = {};  // the last byte stays 0, whatever is written
  return buildFromBuffer(text, buffer, 600);
}

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
    const auto string = ownedElementAt(array, i, REALGetArrayString);
    const auto text = RBString2CFString(string.get());
    CFArrayAppendValue(strings.get(), text ? text.get() : CFSTR(""));
  }
  return strings;
}
