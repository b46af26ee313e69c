#include "standin/coreservices/services.h"

#define KEY(name) const CFStringRef name = CFSTR(#name);
#include "standin/coreservices/metadata/key_names.inc"
#undef KEY
