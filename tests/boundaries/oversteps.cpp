#include <CoreFoundation/CoreFoundation.h>

CF_EXPORT void CFNobodyDeclaresThis(void);

namespace cf {
void inside();
}

CF_EXPORT void overstep(void) {
  CFGetRetainCount(kCFNull);
  CFNobodyDeclaresThis();
  cf::inside();
}
