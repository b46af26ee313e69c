// Event handlers: what host code attached, and the addresses by which the plug-in calls it.
#pragma once

#include "standin/host/value.h"

namespace standin::host {

void forgetHandlers(ObjectHandle object);
void forgetAllHandlers();

}  // namespace standin::host
