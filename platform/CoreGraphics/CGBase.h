#pragma once

#include <CoreFoundation/CoreFoundation.h>

#define CG_EXTERN extern "C" __attribute__((visibility("default")))

typedef float CGFloat;  // a double in programs of 64 bits only
