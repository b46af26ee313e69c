// Calls of the plug-in's functions, and what comes back.
#pragma once

#include "standin/host/language/declarations.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/value.h"

namespace standin::host {

// Calls the plug-in. A handle that it returns comes with a reference; one of the wrong kind or class ends the
// process with the name of the method.
Value callPlugin(void* function, const Words& words, const Type& result, const char* method);
// Calls one of its functions that set: the words, and behind them those of the value, which must fit.
void callSetter(void* function, Words words, const Type& type, const Value& value, const char* name);
bool pluginCallUnderway();

}  // namespace standin::host
