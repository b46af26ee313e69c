// The handlers that host code has attached to the events of its objects.
#pragma once

#include "standin/host/host.h"
#include "standin/host/state/classes.h"

namespace standin::host {

// In the place of the one before, if there is one.
void attachHandler(ObjectHandle object, const Event& event, Handler handler);
void detachHandler(ObjectHandle object, const Event& event);
// Null when none is attached; good until the object's handlers change.
const Handler* findHandler(ObjectHandle object, const Event& event);

void forgetHandlers(ObjectHandle object);
void forgetAllHandlers();

}  // namespace standin::host
