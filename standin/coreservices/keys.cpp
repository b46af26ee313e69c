#include "services.h"

#define KEY(name) const CFStringRef name = CFSTR(#name);
#include "key_names.inc"
#undef KEY
