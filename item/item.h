// MDItemZNK: the host class that stands for one file's metadata item.
#pragma once

#include <CoreServices/CoreServices.h>

#include "host/owned.h"
#include "host/startup.h"

struct MDItemData {
  MDItemRef item;  // owned by the instance; host code may overwrite it, which retains and releases nothing
  REALobject tag;  // a variant that host code stores here; the host locks it, the destructor unlocks it
};
static_assert(sizeof(MDItemData) == 8, "2 words");

inline MDItemData* itemData(REALobject item) {
  return instanceData<MDItemData>(item, MDItemClass);
}

// Raises "NilObjectException" with "MDItem Reference is nil".
[[gnu::noinline, gnu::cold]] void raiseNilItem();

// The instance's item, borrowed. Without one it raises as above and returns null; the caller returns its
// neutral value at once.
inline MDItemRef itemOrRaise(REALobject self) {
  const MDItemRef item = itemData(self)->item;
  if (!item) raiseNilItem();
  return item;
}

// A new MDItemZNK with its own reference to the item. Empty when the host makes no instance.
inline Owned<REALobject> newItem(MDItemRef item) {
  auto instance = adopt(REALnewInstance("MDItemZNK"));
  if (instance) itemData(instance.get())->item = retain(item).leak();
  return instance;
}

void MDItemDestructor(REALobject self);
REALstring querykMDItemDisplayName(REALobject self, int32_t parameter);
REALstring querykMDItemFSName(REALobject self, int32_t parameter);
REALstring querykMDItemPath(REALobject self, int32_t parameter);
int64_t querykMDItemFSSize(REALobject self, int32_t parameter);

REALobject rbMDItemCopyAttributes(REALobject self, REALobject names);
REALobject rbMDItemCopyAttribute(REALobject self, REALstring name);
void rbMDItemCreate(REALobject self, REALobject path);
REALobject rbMDItemCopyAttributeNames(REALobject self);

// typed_attributes.cpp
REALstring rbMDItemCopyAttributeString(REALobject self, REALstring name);
HostBoolean rbMDItemCopyAttributeBoolean(REALobject self, REALstring name);
double rbMDItemCopyAttributeDouble(REALobject self, REALstring name);
REALobject rbMDItemCopyAttributeStringArray(REALobject self, REALstring name);

// schema.cpp: shared methods
REALstring rbMDSchemaCopyDisplayNameForAttribute(REALstring name);
REALstring rbMDSchemaCopyDisplayDescriptionForAttribute(REALstring name);
REALobject rbMDSchemaCopyAllAttributes();
REALstring GetAttributeType(REALstring name);
HostBoolean GetAttributeMultiValued(REALstring name);
