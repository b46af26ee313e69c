// Events: the addresses at which the plug-in calls the handlers of host code.
#pragma once

#include "standin/host/state/classes.h"

namespace standin::host {

// Throws CallError when the host has no address left, or none for so many arguments.
void* handlerAddressFor(const Class& cls, const Event& event);
// Takes the addresses back, and forgets all handlers and what they have thrown.
void endEvents();

}  // namespace standin::host
