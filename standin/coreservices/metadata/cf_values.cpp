#include "standin/coreservices/metadata/cf_values.h"

#include <string>
#include <type_traits>

#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/attributes/text.h"

namespace standin::metadata {

CFStringRef createString(std::string_view bytes) {
  if (isAscii(bytes)) {
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                   static_cast<CFIndex>(bytes.size()), kCFStringEncodingASCII, false);
  }
  const std::u16string units = utf16(readableText(bytes));
  return CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()),
                                      static_cast<CFIndex>(units.size()));
}

CFTypeRef createObject(const Value& value) {
  return std::visit(
      [](auto v) -> CFTypeRef {
        using T = decltype(v);
        if constexpr (std::is_same_v<T, bool>) {
          return CFRetain(v ? kCFBooleanTrue : kCFBooleanFalse);
        } else if constexpr (std::is_same_v<T, int64_t>) {
          return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &v);
        } else if constexpr (std::is_same_v<T, double>) {
          return CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &v);
        } else if constexpr (std::is_same_v<T, Date>) {
          return CFDateCreate(kCFAllocatorDefault, v.seconds);
        } else {
          return createString(v);
        }
      },
      value);
}

CFTypeRef createObject(FileAttribute attribute, const std::vector<Value>& values) {
  if (values.empty()) return nullptr;
  if (!isMultiValued(infoOf(attribute).type)) return createObject(values.front());
  const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  if (!array) return nullptr;
  for (const Value& value : values) appendAndRelease(array, createObject(value));
  return array;
}

void appendAndRelease(CFMutableArrayRef array, CFTypeRef value) {
  if (!value) return;
  CFArrayAppendValue(array, value);
  CFRelease(value);
}

void setAndRelease(CFMutableDictionaryRef dictionary, CFStringRef key, CFTypeRef value) {
  if (!value) return;
  CFDictionarySetValue(dictionary, key, value);
  CFRelease(value);
}

CFArrayRef copyOf(CFArrayRef array) {
  return array ? CFArrayCreateCopy(kCFAllocatorDefault, array) : nullptr;
}

FileAttribute attributeNamed(CFStringRef key) {
  if (const char* const ascii = CFStringGetCStringPtr(key, kCFStringEncodingASCII))
    return fileAttributeNamed({ascii, static_cast<size_t>(CFStringGetLength(key))});
  char text[64];
  const bool isAsciiText = CFStringGetCString(key, text, sizeof text, kCFStringEncodingASCII);
  return isAsciiText ? fileAttributeNamed(text) : FileAttribute::None;
}

}  // namespace standin::metadata
