// Whether there is memory for a new object.
#pragma once

#include <CoreFoundation/CFBase.h>

namespace cf {

// Whether a creator may take memory from `allocator`; ends the process when it is no allocator.
bool canAllocate(CFAllocatorRef allocator, const char* call);

}  // namespace cf
