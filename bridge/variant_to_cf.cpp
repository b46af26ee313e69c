#include "variant_to_cf.h"

#include <ApplicationServices/ApplicationServices.h>

#include "dates.h"
#include "dictionary_methods.h"
#include "folder_items.h"
#include "host/array_elements.h"
#include "host/services.h"
#include "host/variant_access.h"
#include "strings.h"
#include "wrappers.h"

namespace {

// The same reference, as one to a value of any type.
template <typename Reference>
Owned<CFTypeRef> asValue(Owned<Reference> owned) {
  return adopt<CFTypeRef>(owned.leak());
}

Owned<CFTypeRef> numberOf(CFNumberType type, const void* value) {
  return adopt<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, type, value));
}

CFBooleanRef booleanOf(bool value) {
  return value ? kCFBooleanTrue : kCFBooleanFalse;
}

// Apart, so that the usual way stays short where textOf is inlined.
[[gnu::noinline, gnu::cold]] Owned<CFTypeRef> emptyText() {
  return retain<CFTypeRef>(CFSTR(""));
}

// The string's text, or the empty one where there is none.
Owned<CFTypeRef> textOf(REALstring string) {
  auto text = RBString2CFString(string);
  if (text) return adopt<CFTypeRef>(text.leak());
  return emptyText();
}

// Scalars

template <auto& read, CFNumberType type>
Owned<CFTypeRef> fromNumber(REALobject variant) {
  const auto value = read(variant);
  return numberOf(type, &value);
}

Owned<CFTypeRef> fromBoolean(REALobject variant) {
  return retain<CFTypeRef>(booleanOf(static_cast<uint8_t>(GetVariantInt32(variant))));
}

// Every colour is fully opaque: the top byte is ignored.
Owned<CFTypeRef> fromColor(REALobject variant) {
  const int32_t color = GetVariantInt32(variant);
  const auto component = [color](int shift) {
    return static_cast<CGFloat>(((color >> shift) & 0xFF) / 255.0);
  };
  return adopt<CFTypeRef>(CGColorCreateGenericRGB(component(16), component(8), component(0), 1.0f));
}

Owned<CFTypeRef> fromText(REALobject variant) {
  auto string = adopt(GetVariantString(variant));
  auto text = textOf(string.get());
  string.reset();
  return text;
}

// Arrays

// What can't be converted is left out, so the CFArray may be the shorter one.
void append(CFMutableArrayRef values, const Owned<CFTypeRef>& value) {
  if (value) CFArrayAppendValue(values, value.get());
}

template <auto& get, CFNumberType type>
void appendNumber(CFMutableArrayRef values, REALobject array, int32_t index) {
  const auto number = elementAt(array, index, get);
  append(values, numberOf(type, &number));
}

void appendDate(CFMutableArrayRef values, REALobject array, int32_t index) {
  const auto date = ownedElementAt(array, index, REALGetArrayValueObject);
  append(values, asValue(RBDate2CFDate(date.get())));
}

void appendText(CFMutableArrayRef values, REALobject array, int32_t index) {
  const auto string = ownedElementAt(array, index, REALGetArrayValueString);
  append(values, textOf(string.get()));
}

void appendObject(CFMutableArrayRef values, REALobject array, int32_t index) {
  const auto object = ownedElementAt(array, index, REALGetArrayValueObject);
  append(values, CopyVariantAsCFType(object.get()));
}

void appendBoolean(CFMutableArrayRef values, REALobject array, int32_t index) {
  CFArrayAppendValue(values, booleanOf(elementAt(array, index, REALGetArrayValueUInt8)));
}

template <void (*appendElement)(CFMutableArrayRef values, REALobject array, int32_t index)>
Owned<CFTypeRef> fromArray(REALobject array) {
  const int32_t upperBound = REALGetArrayUBound(array);
  auto values = adopt(CFArrayCreateMutable(kCFAllocatorDefault, upperBound + 1, &kCFTypeArrayCallBacks));
  if (!values) return {};
  for (int32_t i = 0; i <= upperBound; ++i) appendElement(values.get(), array, i);
  return adopt<CFTypeRef>(values.leak());
}

// Objects

bool isOfClass(REALobject object, const char* className) {
  void* const classRef = REALGetClassRef(className);
  return classRef && REALObjectIsA(object, classRef);
}

// A folder item is an object that has a method with this declaration.
bool isFolderItem(REALobject object) {
  return REALLoadObjectMethod(object, "TrueItem(Index as integer) as Folderitem");
}

Owned<CFTypeRef> fromMemoryBlock(REALobject block) {
  auto locked = retain(block);
  const int32_t size = REALMemoryBlockGetSize(block);
  const auto bytes = static_cast<const UInt8*>(REALMemoryBlockGetPtr(block));
  auto data = adopt<CFTypeRef>(CFDataCreate(kCFAllocatorDefault, bytes, bytes && size > 0 ? size : 0));
  locked.reset();
  return data;
}

Owned<CFTypeRef> fromFolderItem(REALobject item) {
  return asValue(CreateCFURLfromFolderItem(item));
}

// In a dictionary, kCFNull stands for what can't be converted.
CFTypeRef valueOrNull(const Owned<CFTypeRef>& value) {
  return value ? value.get() : kCFNull;
}

void copyEntry(REALobject dictionary, int32_t index, CFMutableDictionaryRef entries) {
  loadDictionaryMethods(dictionary);
  auto key = adopt(LastDictionaryKeyGetter ? LastDictionaryKeyGetter(dictionary, index) : nullptr);
  loadDictionaryMethods(dictionary);
  auto value = adopt(LastDictionaryGetter ? LastDictionaryGetter(dictionary, key.get()) : nullptr);
  if (key) {
    const auto convertedKey = CopyVariantAsCFType(key.get());
    const auto convertedValue = CopyVariantAsCFType(value.get());
    CFDictionarySetValue(entries, valueOrNull(convertedKey), valueOrNull(convertedValue));
  }
  key.reset();
  value.reset();
}

Owned<CFTypeRef> fromDictionary(REALobject dictionary) {
  int32_t count = 0;
  if (!REALGetPropValueInt32(dictionary, "Count", &count)) count = 0;  // it may have written something
  auto entries = adopt(CFDictionaryCreateMutable(kCFAllocatorDefault, count, &kCFTypeDictionaryKeyCallBacks,
                                                 &kCFTypeDictionaryValueCallBacks));
  if (!entries) return {};
  const DictionaryScope scope;
  for (int32_t i = 0; i < count; ++i) copyEntry(dictionary, i, entries.get());
  return adopt<CFTypeRef>(entries.leak());
}

// 32-bit floats, as the platform has its rectangles, sizes and points.
Owned<CFTypeRef> fromGeometry(REALobject object, int fieldCount) {
  const double* const fields = reinterpret_cast<const FamilyGeometry*>(object)->fields;
  float values[4];
  for (int i = 0; i < fieldCount; ++i) values[i] = static_cast<float>(fields[i]);
  return adopt<CFTypeRef>(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(values),
                                       fieldCount * static_cast<CFIndex>(sizeof(float))));
}

Owned<CFTypeRef> fromWrapper(REALobject object, CFTypeRef (*retainValue)(CFTypeRef value)) {
  const CFTypeRef reference = familyWrapper(object)->reference;
  return adopt<CFTypeRef>(reference ? retainValue(reference) : nullptr);
}

// The family's classes; an object is compared with the rows in this order.
constexpr struct {
  const char* className;
  int fieldCount;  // of a rectangle, size or point; 0 for a wrapped reference
  CFTypeRef (*retain)(CFTypeRef value) = CFRetain;
} kFamily[] = {
    {"CGRectZNK", 4},
    {"CGSizeZNK", 2},
    {"CGPointZNK", 2},
    {"CGImageZNK", 0, retainBy<CGImageRef, CGImageRetain>},
    {"CGColorSpaceZNK", 0, retainBy<CGColorSpaceRef, CGColorSpaceRetain>},
    {"CGColorZNK", 0, retainBy<CGColorRef, CGColorRetain>},
    {"CGDataProviderZNK", 0, retainBy<CGDataProviderRef, CGDataProviderRetain>},
    {"CGDataConsumerZNK", 0, retainBy<CGDataConsumerRef, CGDataConsumerRetain>},
    {"CGFontZNK", 0},
    {"CGContextZNK", 0},
    {"CGEventZNK", 0},
    {"CGEventSourceZNK", 0},
    {"CGLayerZNK", 0},
    {"CGPathZNK", 0},
    {"CGPSConverterZNK", 0},
    {"KeychainZNK", 0},
    {"KeychainItemZNK", 0},
    {"CFObjectZNK", 0},
    {"NSAttributedStringZNK", 0},
    {"NSTimerZNK", 0},
    {"NSCalendarZNK", 0},
    {"NSCharacterSetZNK", 0},
    {"NSErrorZNK", 0},
    {"NSLocaleZNK", 0},
    {"NSTimeZoneZNK", 0},
};

Owned<CFTypeRef> fromObject(REALobject object) {
  if (isOfClass(object, "MemoryBlock")) return fromMemoryBlock(object);
  if (isFolderItem(object)) return fromFolderItem(object);
  if (isOfClass(object, "Dictionary")) return fromDictionary(object);
  for (const auto& row : kFamily) {
    if (!isOfClass(object, row.className)) continue;
    return row.fieldCount ? fromGeometry(object, row.fieldCount) : fromWrapper(object, row.retain);
  }
  return {};
}

}  // namespace

// By the host's code of a variant's type; an array has the code of its elements plus 4096.
Owned<CFTypeRef> CopyVariantAsCFType(REALobject variant) {
  if (!variant) return {};
  // clang-format off
  switch (GetVariantType(variant)) {
    case 0:    return {};
    case 2:    return fromNumber<GetVariantInt32, kCFNumberSInt32Type>(variant);
    case 3:    return fromNumber<GetVariantInt64, kCFNumberSInt64Type>(variant);
    case 4:    return fromNumber<GetVariantSingle, kCFNumberFloat32Type>(variant);
    case 5:
    case 6:    return fromNumber<GetVariantDouble, kCFNumberFloat64Type>(variant);
    case 7:    return asValue(RBDate2CFDate(variant));
    case 9:    return fromObject(variant);
    case 11:   return fromBoolean(variant);
    case 16:   return fromColor(variant);
    case 4098: return fromArray<appendNumber<REALGetArrayValueInt32, kCFNumberSInt32Type>>(variant);
    case 4099: return fromArray<appendNumber<REALGetArrayValueInt64, kCFNumberSInt64Type>>(variant);
    case 4100: return fromArray<appendNumber<REALGetArrayValueSingle, kCFNumberFloat32Type>>(variant);
    case 4101: return fromArray<appendNumber<REALGetArrayValueDouble, kCFNumberFloat64Type>>(variant);
    case 4103: return fromArray<appendDate>(variant);
    case 4104: return fromArray<appendText>(variant);
    case 4105: return fromArray<appendObject>(variant);
    case 4107: return fromArray<appendBoolean>(variant);
    default:   return fromText(variant);
  }
  // clang-format on
}
