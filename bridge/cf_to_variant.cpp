#include "cf_to_variant.h"

#include <ApplicationServices/ApplicationServices.h>

#include "dates.h"
#include "dictionary_methods.h"
#include "folder_items.h"
#include "host/array_elements.h"
#include "host/build_string.h"
#include "host/services.h"
#include "strings.h"
#include "wrappers.h"

// Declared once more: the headers of the oldest system lack it, and those of newer ones take it for granted.
extern "C" CFTypeID CTRunDelegateGetTypeID() WEAK_IMPORT_ATTRIBUTE;

namespace {

// How values of one type are converted.
struct Conversion {
  CFTypeID (*typeID)();
  Owned<REALobject> (*convert)(const Conversion& row, CFTypeRef value);
  const char* className = nullptr;                 // of the wrapper, for the types that become one
  CFTypeRef (*retain)(CFTypeRef value) = nullptr;  // for plain wrappers
};

Owned<REALobject> fromURL(const Conversion&, CFTypeRef value) {
  return CFURL2RBVariant(static_cast<CFURLRef>(value));
}

Owned<REALobject> fromBoolean(const Conversion&, CFTypeRef value) {
  return adopt(REALNewVariantBoolean(CFBooleanGetValue(static_cast<CFBooleanRef>(value))));
}

Owned<REALobject> fromNumber(const Conversion&, CFTypeRef value) {
  const auto number = static_cast<CFNumberRef>(value);
  double real = 0;
  if (CFNumberIsFloatType(number) && CFNumberGetValue(number, kCFNumberDoubleType, &real)) {
    return adopt(REALNewVariantDouble(real));
  }
  int32_t integer = 0;
  if (CFNumberGetByteSize(number) <= 4 && CFNumberGetValue(number, kCFNumberLongType, &integer)) {
    return adopt(REALNewVariantInteger(integer));
  }
  int64_t wide = 0;
  if (!CFNumberGetValue(number, kCFNumberLongLongType, &wide)) return {};
  return adopt(REALNewVariantInt64(wide));
}

void storeElement(REALobject array, CFIndex index, const Owned<REALobject>& element) {
  REALobject* const slots = directElements<REALobject>(array);
  if (!slots) {
    REALSetArrayValueObject(array, element.get(), index);
    return;
  }
  auto held = retain(element.get());
  releaseField(slots[index]);
  slots[index] = held.leak();
}

Owned<REALobject> fromArray(const Conversion&, CFTypeRef value) {
  const auto values = static_cast<CFArrayRef>(value);
  const CFIndex count = CFArrayGetCount(values);
  auto array = adopt(REALCreateArray(kObjectElements, count - 1));
  if (!array) return {};
  for (CFIndex i = 0; i < count; ++i) {
    const auto element = GetCFTypeAsVariant(CFArrayGetValueAtIndex(values, i));
    storeElement(array.get(), i, element);
  }
  return array;
}

Owned<REALobject> fromNull(const Conversion&, CFTypeRef) {
  return {};
}

Owned<REALobject> fromDictionary(const Conversion&, CFTypeRef value) {
  return CFDictionary2RBDictionary(static_cast<CFDictionaryRef>(value));
}

Owned<REALobject> fromString(const Conversion&, CFTypeRef value) {
  return variantOf(CFString2RBString(static_cast<CFStringRef>(value)));
}

// The raw bytes, as a string of unknown encoding.
Owned<REALobject> fromData(const Conversion&, CFTypeRef value) {
  const auto data = static_cast<CFDataRef>(value);
  return variantOf(REALBuildUnicodeString(CFDataGetBytePtr(data), CFDataGetLength(data), kUnknownEncoding));
}

Owned<REALobject> fromDate(const Conversion&, CFTypeRef value) {
  return CFDate2RBDate(static_cast<CFDateRef>(value));
}

void fill(REALobject wrapper, CFTypeRef retained) {
  familyWrapper(wrapper)->reference = retained;
  familyWrapper(wrapper)->tag = kFamilyTag;
}

Owned<REALobject> plainWrapper(const Conversion& row, CFTypeRef value) {
  auto wrapper = adopt(REALnewInstance(row.className));
  if (wrapper) fill(wrapper.get(), row.retain(value));
  return wrapper;
}

Owned<REALobject> newWrapper(const char* className) {
  auto wrapper = adopt(REALnewInstance(className));
  if (wrapper) return wrapper;
  return adopt(REALnewInstance("CFObjectZNK"));
}

// Writes only to an instance that its own class has tagged as a wrapper of CF values. Any other instance is
// left as it is, and the reference to it is not given back.
Owned<REALobject> checkedWrapper(const Conversion& row, CFTypeRef value) {
  auto wrapper = newWrapper(row.className);
  if (!wrapper) return {};
  if (familyWrapper(wrapper.get())->tag != kFamilyTag) {
    wrapper.leak();
    return {};
  }
  fill(wrapper.get(), CFRetain(value));
  return wrapper;
}

// A value's type is compared with the rows in this order.
// clang-format off
constexpr Conversion kConversions[] = {
    {CFURLGetTypeID,            fromURL},
    {CFBooleanGetTypeID,        fromBoolean},
    {CFNumberGetTypeID,         fromNumber},
    {CFArrayGetTypeID,          fromArray},
    {CFNullGetTypeID,           fromNull},
    {CFDictionaryGetTypeID,     fromDictionary},
    {CFStringGetTypeID,         fromString},
    {CFDataGetTypeID,           fromData},
    {CFDateGetTypeID,           fromDate},
    {CGColorSpaceGetTypeID,     plainWrapper,   "CGColorSpaceZNK",   retainBy<CGColorSpaceRef, CGColorSpaceRetain>},
    {CGColorGetTypeID,          plainWrapper,   "CGColorZNK",        retainBy<CGColorRef, CGColorRetain>},
    {CGImageGetTypeID,          plainWrapper,   "CGImageZNK",        retainBy<CGImageRef, CGImageRetain>},
    {CGLayerGetTypeID,          plainWrapper,   "CGLayerZNK",        retainBy<CGLayerRef, CGLayerRetain>},
    {CGPathGetTypeID,           plainWrapper,   "CGPathZNK",         retainBy<CGPathRef, CGPathRetain>},
    {CGDataConsumerGetTypeID,   plainWrapper,   "CGDataConsumerZNK", retainBy<CGDataConsumerRef, CGDataConsumerRetain>},
    {CGDataProviderGetTypeID,   plainWrapper,   "CGDataProviderZNK", retainBy<CGDataProviderRef, CGDataProviderRetain>},
    {CGPSConverterGetTypeID,    plainWrapper,   "CGPSConverterZNK",  CFRetain},
    {CGContextGetTypeID,        plainWrapper,   "CGContextZNK",      retainBy<CGContextRef, CGContextRetain>},
    {CGEventGetTypeID,          checkedWrapper, "CGEventZNK"},
    {CGEventSourceGetTypeID,    checkedWrapper, "CGEventSourceZNK"},
    {CGFontGetTypeID,           plainWrapper,   "CGFontZNK",         retainBy<CGFontRef, CGFontRetain>},
};

// Compared when no row above is of the value's type. Types that have a row above are never reached here.
constexpr Conversion kCheckedWrappers[] = {
    {CFURLGetTypeID,              checkedWrapper, "CFURLZNK"},
    {CFDictionaryGetTypeID,       checkedWrapper, "CFDictionaryZNK"},
    {CFStringGetTypeID,           checkedWrapper, "CFStringZNK"},
    {CFNumberGetTypeID,           checkedWrapper, "CFNumberZNK"},
    {CFArrayGetTypeID,            checkedWrapper, "CFArrayZNK"},
    {CFBooleanGetTypeID,          checkedWrapper, "CFBooleanZNK"},
    {CFDataGetTypeID,             checkedWrapper, "CFBinaryDataZNK"},
    {CFCharacterSetGetTypeID,     checkedWrapper, "CFCharacterSetZNK"},
    {CFBundleGetTypeID,           checkedWrapper, "CFBundleZNK"},
    {CFSetGetTypeID,              checkedWrapper, "CFSetZNK"},
    {CFBagGetTypeID,              checkedWrapper, "CFBagZNK"},
    {CFUUIDGetTypeID,             checkedWrapper, "CFUUIDZNK"},
    {CFTimeZoneGetTypeID,         checkedWrapper, "CFTimeZoneZNK"},
    {CFDateGetTypeID,             checkedWrapper, "CFDateZNK"},
    {CFAttributedStringGetTypeID, checkedWrapper, "CFAttributedStringZNK"},
    {CFErrorGetTypeID,            checkedWrapper, "CFErrorZNK"},
    {CTFontGetTypeID,             checkedWrapper, "CTFontZNK"},
    {CTFontCollectionGetTypeID,   checkedWrapper, "CTFontCollectionZNK"},
    {CTFrameGetTypeID,            checkedWrapper, "CTFrameZNK"},
    {CTFramesetterGetTypeID,      checkedWrapper, "CTFramesetterZNK"},
    {CTGlyphInfoGetTypeID,        checkedWrapper, "CTGlyphInfoZNK"},
    {CTLineGetTypeID,             checkedWrapper, "CTLineZNK"},
    {CTParagraphStyleGetTypeID,   checkedWrapper, "CTParagraphStyleZNK"},
    {CTRunGetTypeID,              checkedWrapper, "CTRunZNK"},
    {CTTypesetterGetTypeID,       checkedWrapper, "CTTypesetterZNK"},
    {CTRunDelegateGetTypeID,      checkedWrapper, "CTRunDelegateZNK"},  // null on systems before 10.7
};
// clang-format on

constexpr Conversion kAnyOther = {nullptr, checkedWrapper, "CFObjectZNK"};

template <size_t count>
const Conversion* rowOf(const Conversion (&rows)[count], CFTypeID type) {
  for (const Conversion& row : rows) {
    if (row.typeID && row.typeID() == type) return &row;
  }
  return nullptr;
}

const Conversion& conversionOf(CFTypeRef value) {
  const Conversion* row = rowOf(kConversions, CFGetTypeID(value));
  if (!row) row = rowOf(kCheckedWrappers, CFGetTypeID(value));
  return row ? *row : kAnyOther;
}

}  // namespace

Owned<REALobject> GetCFTypeAsVariant(CFTypeRef value) {
  if (!value || value == kCFNull) return {};
  const Conversion& row = conversionOf(value);
  return row.convert(row, value);
}

Owned<REALobject> CFDictionary2RBDictionary(CFDictionaryRef values) {
  auto dictionary = adopt(REALnewInstance("Dictionary"));
  if (!dictionary) return {};
  const DictionaryScope scope;
  CFDictionaryApplyFunction(values, MyCFDictionaryApplierFunction, dictionary.get());
  return dictionary;
}

// Key and value are converted before the methods are loaded: either conversion may load another dictionary's.
void MyCFDictionaryApplierFunction(const void* key, const void* value, void* context) {
  const auto dictionary = static_cast<REALobject>(context);
  if (!key || !dictionary) return;
  auto valueVariant = GetCFTypeAsVariant(value);
  auto keyVariant = GetCFTypeAsVariant(key);
  loadDictionaryMethods(dictionary);
  if (LastDictionarySetter) LastDictionarySetter(dictionary, keyVariant.get(), valueVariant.get());
  keyVariant.reset();
  valueVariant.reset();
}
