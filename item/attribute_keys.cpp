#include "attribute_keys.h"

#include <CoreServices/CoreServices.h>

#include "bridge/strings.h"
#include "host/build_string.h"

// Declared once more, because the headers of an older system lack its newer keys.
#define PLATFORM_KEY(key) extern "C" const CFStringRef key WEAK_IMPORT_ATTRIBUTE;
#define TEXT_KEY(key)
#include "attribute_keys.inc"

#define PLATFORM_KEY(key)                 \
  REALstring get##key() {                 \
    return CFString2RBString(key).leak(); \
  }
#define TEXT_KEY(key)                                                                    \
  REALstring get##key() {                                                                \
    return REALBuildUnicodeString(#key, sizeof #key - 1, kCFStringEncodingASCII).leak(); \
  }
#include "attribute_keys.inc"
