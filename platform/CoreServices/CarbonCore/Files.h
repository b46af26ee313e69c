#pragma once

#include <CoreFoundation/CoreFoundation.h>

#define CS_EXPORT extern "C" __attribute__((visibility("default"))) WEAK_IMPORT_ATTRIBUTE

typedef SInt16 FSVolumeRefNum;

struct FSRef {
  UInt8 hidden[80];
};
static_assert(sizeof(FSRef) == 80, "FSRef");
