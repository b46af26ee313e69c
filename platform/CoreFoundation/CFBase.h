#pragma once

#include <stddef.h>
#include <stdint.h>

#include "AvailabilityMacros.h"

#define CF_EXPORT extern "C" __attribute__((visibility("default")))

typedef unsigned char Boolean;
typedef unsigned char UInt8;
typedef signed char SInt8;
typedef unsigned short UInt16;
typedef signed short SInt16;
typedef unsigned long UInt32;
typedef signed long SInt32;
typedef unsigned long long UInt64;
typedef signed long long SInt64;
typedef float Float32;
typedef double Float64;
typedef UInt16 UniChar;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 OptionBits;
typedef UInt32 OSType;

typedef unsigned char* StringPtr;
typedef unsigned char Str63[64];
typedef Str63 StrFileName;

struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
};
static_assert(sizeof(HFSUniStr255) == 512, "HFSUniStr255");

enum { noErr = 0, fnfErr = -43 };
enum { kNilOptions = 0 };

typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef signed long CFIndex;
typedef CFIndex CFComparisonResult;

enum { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };
enum { kCFNotFound = -1 };

struct CFRange {
  CFIndex location;
  CFIndex length;
};
inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  return {location, length};
}

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFString* CFMutableStringRef;
typedef const struct __CFNull* CFNullRef;

CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorSystemDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;
CF_EXPORT const CFNullRef kCFNull;
CF_EXPORT double kCFCoreFoundationVersionNumber;

CF_EXPORT CFTypeID CFAllocatorGetTypeID(void);
CF_EXPORT CFTypeID CFNullGetTypeID(void);

CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);
CF_EXPORT void CFRelease(CFTypeRef cf);
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);
CF_EXPORT Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
CF_EXPORT CFHashCode CFHash(CFTypeRef cf);
CF_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID type_id);
