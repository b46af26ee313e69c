// Properties of instances, wherever their values are: in the instance data, behind functions of the plug-in,
// or the host's own.
#pragma once

#include "standin/host/state/classes.h"
#include "standin/host/things/objects.h"

namespace standin::host {

Value readProperty(const HostObject& object, const Property& property);
// The value must fit, and the property must not be read-only.
// Gives up what the fields of instances hold, of every instance that is alive.
void emptyProperties();
void writeProperty(HostObject& object, const Property& property, const Value& value);

}  // namespace standin::host
