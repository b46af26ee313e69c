// The platform's functions that the rows reach. They answer the same each time and do nothing else. Those
// that no row reaches are in a library that CMake makes.
#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>

#include "bench/calls/note.h"
#include "bench/calls/things.h"

using namespace bench::calls;

namespace {

const Thing& thing(const void* value) {
  return *static_cast<const Thing*>(value);
}

template <typename Reference>
Reference as(Thing& value) {
  return reinterpret_cast<Reference>(&value);
}

}  // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = nullptr;
const CFNullRef kCFNull = as<CFNullRef>(cfNull);
const CFArrayCallBacks kCFTypeArrayCallBacks = {};
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {};

// Types

#define TYPE(function, type) \
  CFTypeID function() {      \
    NOTE();                  \
    return type;             \
  }
TYPE(CFURLGetTypeID, kURL)
TYPE(CFBooleanGetTypeID, kBoolean)
TYPE(CFNumberGetTypeID, kNumber)
TYPE(CFArrayGetTypeID, kArray)
TYPE(CFNullGetTypeID, kNull)
TYPE(CFDictionaryGetTypeID, kDictionary)
TYPE(CFStringGetTypeID, kString)
TYPE(CFDataGetTypeID, kData)
TYPE(CFDateGetTypeID, kDate)

CFTypeID CFGetTypeID(CFTypeRef value) {
  NOTE(value);
  return thing(value).type;
}

CFTypeRef CFRetain(CFTypeRef value) {
  NOTE(value);
  return value;
}

void CFRelease(CFTypeRef value) {
  NOTE(value);
}

// Values

CFIndex CFArrayGetCount(CFArrayRef values) {
  NOTE(values);
  return kElements;
}

const void* CFArrayGetValueAtIndex(CFArrayRef values, CFIndex index) {
  NOTE(values, index);
  return &cfString;
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex capacity, const CFArrayCallBacks* callBacks) {
  NOTE(capacity, callBacks);
  return as<CFMutableArrayRef>(newCFArray);
}

void CFArrayAppendValue(CFMutableArrayRef values, const void* value) {
  NOTE(values, value);
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
  NOTE(capacity, keyCallBacks, valueCallBacks);
  return as<CFMutableDictionaryRef>(newCFDictionary);
}

void CFDictionarySetValue(CFMutableDictionaryRef values, const void* key, const void* value) {
  NOTE(values, key, value);
}

void CFDictionaryApplyFunction(CFDictionaryRef values, CFDictionaryApplierFunction apply, void* context) {
  NOTE(values, context);
  for (int i = 0; i < kElements; ++i) apply(&cfKey, &cfNumber, context);
}

Boolean CFNumberIsFloatType(CFNumberRef number) {
  NOTE(number);
  return false;
}

CFIndex CFNumberGetByteSize(CFNumberRef number) {
  NOTE(number);
  return 4;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  NOTE(number, type, buffer(value, 4));
  return true;
}

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
  NOTE(type, *static_cast<const int32_t*>(value));
  return as<CFNumberRef>(newCFNumber);
}

CFIndex CFStringGetLength(CFStringRef text) {
  NOTE(text);
  return kLength;
}

Boolean CFStringGetCString(CFStringRef text, char* bytes, CFIndex size, CFStringEncoding encoding) {
  // One more is cleared, so that the text ends whatever is written.
  NOTE(text, buffer(bytes, size + 1), size, encoding);
  return true;
}

CFStringRef __CFStringMakeConstantString(const char* text) {
  NOTE(text);
  return as<CFStringRef>(constantCFString);
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date) {
  NOTE(date);
  return 0;
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime time, CFTimeZoneRef zone) {
  NOTE(time, zone);
  return {2001, 2, 3, 4, 5, 6};
}

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate date, CFTimeZoneRef zone) {
  NOTE(date.year, date.month, date.day, date.hour, date.minute, date.second, zone);
  return 0;
}

CFDateRef CFDateCreate(CFAllocatorRef, CFAbsoluteTime time) {
  NOTE(time);
  return as<CFDateRef>(newCFDate);
}

// Files

Boolean CFURLGetFSRef(CFURLRef url, FSRef* file) {
  NOTE(url, place(file));
  return true;
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* file) {
  NOTE(place(file));
  return as<CFURLRef>(newCFURL);
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component,
                                               Boolean isFolder) {
  NOTE(url, component, isFolder);
  return as<CFURLRef>(appendedCFURL);
}

OSErr FSFindFolder(FSVolumeRefNum volume, OSType type, Boolean create, FSRef* folder) {
  NOTE(volume, type, create, place(folder));
  return noErr;
}

OSErr FSGetCatalogInfo(const FSRef* file, FSCatalogInfoBitmap which, FSCatalogInfo* info, HFSUniStr255* name,
                       FSSpecPtr spec, FSRef* parent) {
  NOTE(place(file), which, place(info), place(name), place(spec), place(parent));
  if (info) info->nodeID = 100;
  return noErr;
}

// Bundles

CFBundleRef CFBundleCreate(CFAllocatorRef, CFURLRef url) {
  NOTE(url);
  return as<CFBundleRef>(newCFBundle);
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
  NOTE(bundle);
  return true;
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
  NOTE(bundle, name);
  return nullptr;
}

// Metadata

CFIndex MDQueryGetResultCount(MDQueryRef asked) {
  NOTE(asked);
  return 1000;
}

const void* MDQueryGetResultAtIndex(MDQueryRef asked, CFIndex index) {
  NOTE(asked, index);
  return &cfItem;
}

CFTypeRef MDItemCopyAttribute(MDItemRef asked, CFStringRef key) {
  NOTE(asked, key);
  return thing(asked).data[0];
}
