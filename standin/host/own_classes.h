// Instances of the host's own classes that are more than a block of memory and properties.
#pragma once

#include "standin/host/handles.h"

namespace standin::host {

struct Class;
class HostObject;

HostObject* makeException(const Class& cls, Side owner);
HostObject* makeDate(const Class& cls, Side owner);
HostObject* makeDictionary(const Class& cls, Side owner);
HostObject* makeMemoryBlock(const Class& cls, Side owner);
HostObject* makeFolderItem(const Class& cls, Side owner);

}  // namespace standin::host
