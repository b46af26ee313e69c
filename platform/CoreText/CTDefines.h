#pragma once

#include <CoreFoundation/CoreFoundation.h>

#define CT_EXPORT extern "C" __attribute__((visibility("default")))
