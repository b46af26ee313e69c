// Registration of classes, and the records' older layout, which hosts of control version 9 take.
#pragma once

#include "services.h"
#include "startup.h"

// Rewrites a class record, in place, to the layout of control version 9.
void convertToOldLayout(REALclassDefinition* definition);

// Registers a class with the host. The record and its tables must live as long as the process: the host keeps
// pointers to them. For hosts of control version 9 the record is first rewritten, in place, to the older
// layout. A host without the service leaves the class unregistered.
// Inline, as start-up alone calls it.
inline void MyREALRegisterClass(REALclassDefinition* definition) {
  definition->dataSize = (definition->dataSize + 15) / 16 * 16;
  if (CurrentREALControlVersion > 9) {
    definition->version = CurrentREALControlVersion;
  } else {
    convertToOldLayout(definition);
  }
  REALRegisterClass(definition);
}

// A new table of the properties in the older layout (10 words each), never freed. Null for a null table, for
// a count of 0 or less, and when there is no memory.
void* FixProperties(const REALproperty* properties, int32_t count);

// Host code's handler of the event for this object, or null. The event must be a row of a registered table.
void* REALGetEventInstance(REALobject instance, const REALevent* event);
