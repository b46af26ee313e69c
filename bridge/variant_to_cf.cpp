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

// The string's text, or the empty one where there is none.
Owned<CFTypeRef> textOf(REALstring string) {
  auto text = RBString2CFString(string);
  return text ? adopt<CFTypeRef>(text.leak()) : retain<CFTypeRef>(CFSTR(""));
}

// Scalars

Owned<CFTypeRef> fromNil(REALobject) {
  return {};
}

template <auto& read, CFNumberType type>
Owned<CFTypeRef> fromNumber(REALobject variant) {
  const auto value = read(variant);
  return numberOf(type, &value);
}

Owned<CFTypeRef> fromDate(REALobject variant) {
  return asValue(RBDate2CFDate(variant));
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

struct ObjectConversion {
  const char* className;
  bool (*matches)(const ObjectConversion& row, REALobject object);
  Owned<CFTypeRef> (*convert)(const ObjectConversion& row, REALobject object);
  int fieldCount;                        // for geometry
  CFTypeRef (*retain)(CFTypeRef value);  // for wrappers
};

bool isOfClass(const ObjectConversion& row, REALobject object) {
  void* const classRef = REALGetClassRef(row.className);
  return classRef && REALObjectIsA(object, classRef);
}

// A folder item is an object that has a method with this declaration.
bool isFolderItem(const ObjectConversion&, REALobject object) {
  return REALLoadObjectMethod(object, "TrueItem(Index as integer) as Folderitem");
}

Owned<CFTypeRef> fromMemoryBlock(const ObjectConversion&, REALobject block) {
  auto locked = retain(block);
  const int32_t size = REALMemoryBlockGetSize(block);
  const auto bytes = static_cast<const UInt8*>(REALMemoryBlockGetPtr(block));
  auto data = adopt<CFTypeRef>(CFDataCreate(kCFAllocatorDefault, bytes, bytes && size > 0 ? size : 0));
  locked.reset();
  return data;
}

Owned<CFTypeRef> fromFolderItem(const ObjectConversion&, REALobject item) {
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

Owned<CFTypeRef> fromDictionary(const ObjectConversion&, REALobject dictionary) {
  int32_t count = 0;
  REALGetPropValueInt32(dictionary, "Count", &count);
  auto entries = adopt(CFDictionaryCreateMutable(kCFAllocatorDefault, count, &kCFTypeDictionaryKeyCallBacks,
                                                 &kCFTypeDictionaryValueCallBacks));
  if (!entries) return {};
  const DictionaryScope scope;
  for (int32_t i = 0; i < count; ++i) copyEntry(dictionary, i, entries.get());
  return adopt<CFTypeRef>(entries.leak());
}

// 32-bit floats, as the platform has its rectangles, sizes and points.
Owned<CFTypeRef> fromGeometry(const ObjectConversion& row, REALobject object) {
  const double* const fields = reinterpret_cast<const FamilyGeometry*>(object)->fields;
  float values[4];
  for (int i = 0; i < row.fieldCount; ++i) values[i] = static_cast<float>(fields[i]);
  return adopt<CFTypeRef>(CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(values),
                                       row.fieldCount * static_cast<CFIndex>(sizeof(float))));
}

Owned<CFTypeRef> fromWrapper(const ObjectConversion& row, REALobject object) {
  const CFTypeRef reference = familyWrapper(object)->reference;
  if (!reference) return {};
  return adopt<CFTypeRef>(row.retain(reference));
}

constexpr ObjectConversion wrapper(const char* className, CFTypeRef (*retainValue)(CFTypeRef) = CFRetain) {
  return {className, isOfClass, fromWrapper, 0, retainValue};
}
constexpr ObjectConversion geometry(const char* className, int fieldCount) {
  return {className, isOfClass, fromGeometry, fieldCount, nullptr};
}

// An object is compared with the rows in this order.
constexpr ObjectConversion kObjects[] = {
    {"MemoryBlock", isOfClass, fromMemoryBlock, 0, nullptr},
    {"FolderItem", isFolderItem, fromFolderItem, 0, nullptr},
    {"Dictionary", isOfClass, fromDictionary, 0, nullptr},
    geometry("CGRectZNK", 4),
    geometry("CGSizeZNK", 2),
    geometry("CGPointZNK", 2),
    wrapper("CGImageZNK", retainBy<CGImageRef, CGImageRetain>),
    wrapper("CGColorSpaceZNK", retainBy<CGColorSpaceRef, CGColorSpaceRetain>),
    wrapper("CGColorZNK", retainBy<CGColorRef, CGColorRetain>),
    wrapper("CGDataProviderZNK", retainBy<CGDataProviderRef, CGDataProviderRetain>),
    wrapper("CGDataConsumerZNK", retainBy<CGDataConsumerRef, CGDataConsumerRetain>),
    wrapper("CGFontZNK"),
    wrapper("CGContextZNK"),
    wrapper("CGEventZNK"),
    wrapper("CGEventSourceZNK"),
    wrapper("CGLayerZNK"),
    wrapper("CGPathZNK"),
    wrapper("CGPSConverterZNK"),
    wrapper("KeychainZNK"),
    wrapper("KeychainItemZNK"),
    wrapper("CFObjectZNK"),
    wrapper("NSAttributedStringZNK"),
    wrapper("NSTimerZNK"),
    wrapper("NSCalendarZNK"),
    wrapper("NSCharacterSetZNK"),
    wrapper("NSErrorZNK"),
    wrapper("NSLocaleZNK"),
    wrapper("NSTimeZoneZNK"),
};

Owned<CFTypeRef> fromObject(REALobject object) {
  for (const ObjectConversion& row : kObjects) {
    if (row.matches(row, object)) return row.convert(row, object);
  }
  return {};
}

using FromVariant = Owned<CFTypeRef>(REALobject variant);

// By the host's code of a variant's type. Whatever has no row of its own is read as text.
constexpr FromVariant* kTypes[] = {
    /* 0 */ fromNil,
    /* 1 */ fromText,
    /* 2 */ fromNumber<GetVariantInt32, kCFNumberSInt32Type>,
    /* 3 */ fromNumber<GetVariantInt64, kCFNumberSInt64Type>,
    /* 4 */ fromNumber<GetVariantSingle, kCFNumberFloat32Type>,
    /* 5 */ fromNumber<GetVariantDouble, kCFNumberFloat64Type>,
    /* 6 */ fromNumber<GetVariantDouble, kCFNumberFloat64Type>,
    /* 7 */ fromDate,
    /* 8 */ fromText,
    /* 9 */ fromObject,
    /* 10 */ fromText,
    /* 11 */ fromBoolean,
    /* 12 */ fromText,
    /* 13 */ fromText,
    /* 14 */ fromText,
    /* 15 */ fromText,
    /* 16 */ fromColor,
};

// An array has the code of its elements plus this.
constexpr int32_t kArray = 4096;

constexpr FromVariant* kArrayTypes[] = {
    /* 0 */ fromText,
    /* 1 */ fromText,
    /* 2 */ fromArray<appendNumber<REALGetArrayValueInt32, kCFNumberSInt32Type>>,
    /* 3 */ fromArray<appendNumber<REALGetArrayValueInt64, kCFNumberSInt64Type>>,
    /* 4 */ fromArray<appendNumber<REALGetArrayValueSingle, kCFNumberFloat32Type>>,
    /* 5 */ fromArray<appendNumber<REALGetArrayValueDouble, kCFNumberFloat64Type>>,
    /* 6 */ fromText,
    /* 7 */ fromArray<appendDate>,
    /* 8 */ fromArray<appendText>,
    /* 9 */ fromArray<appendObject>,
    /* 10 */ fromText,
    /* 11 */ fromArray<appendBoolean>,
};

template <uint32_t count>
FromVariant* rowAt(FromVariant* const (&rows)[count], uint32_t code) {
  return code < count ? rows[code] : fromText;
}

}  // namespace

Owned<CFTypeRef> CopyVariantAsCFType(REALobject variant) {
  if (!variant) return {};
  const auto type = static_cast<uint32_t>(GetVariantType(variant));
  return (type < kArray ? rowAt(kTypes, type) : rowAt(kArrayTypes, type - kArray))(variant);
}
