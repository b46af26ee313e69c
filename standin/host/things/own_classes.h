// The host's own classes: exceptions, Date, Dictionary, MemoryBlock, FolderItem.
#pragma once

#include "standin/host/state/classes.h"

namespace standin::host {

void addOwnClasses(ClassTable& classes);

}  // namespace standin::host
