#pragma once

#include <CoreServices/CoreServices.h>

CF_EXPORT OSStatus HISearchWindowShow(CFStringRef inSearchString, OptionBits inFlags);
