// Timers, as run loops take them.
#pragma once

#include "standin/system/run_loop/engine.h"

namespace standin {

// Ends the process in the name of `call` unless `timer` is one.
RunLoopInput& checkedTimer(const char* call, CFRunLoopTimerRef timer);

}  // namespace standin
