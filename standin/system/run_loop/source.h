// The objects that sources of run loops are, whatever makes them fire.
#pragma once

#include "standin/corefoundation/CFRuntime.h"
#include "standin/system/run_loop/engine.h"

struct __CFRunLoopSource {
  CFRuntimeBase base;
  standin::RunLoopInput* input;  // the source's own
};

namespace standin {

// A source without its input, the caller's; null when there is no memory.
CFRunLoopSourceRef makeSource(CFAllocatorRef allocator);

// Ends the process in the name of `call` unless `source` is one.
RunLoopInput& checkedSource(const char* call, CFRunLoopSourceRef source);

}  // namespace standin
