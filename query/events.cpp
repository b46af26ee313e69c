// From the notifications of a query to the events of its host object.
#include "host/owned.h"
#include "host/registration.h"
#include "item/item.h"
#include "query.h"

REALevent MDQueryEvents[kEventCount] = {
    {"Progress(AddedItems() as MDItemZNK, ChangedItems() as MDItemZNK, RemovedItems() as MDItemZNK)"},
    {"Finish()"},
    {"Update(AddedItems() as MDItemZNK, ChangedItems() as MDItemZNK, RemovedItems() as MDItemZNK)"},
};

namespace {

typedef void ItemsHandler(REALobject self, REALobject added, REALobject changed, REALobject removed);
typedef void FinishHandler(REALobject self);

template <typename Handler>
Handler* handlerOf(REALobject self, MDQueryEvent event) {
  return reinterpret_cast<Handler*>(REALGetEventInstance(self, &MDQueryEvents[event]));
}

bool isNamed(CFStringRef name, CFStringRef other) {
  return CFStringCompare(name, other, 0) == kCFCompareEqualTo;
}

Owned<CFArrayRef> retainItems(CFDictionaryRef userInfo, CFStringRef key) {
  return userInfo ? retain(static_cast<CFArrayRef>(CFDictionaryGetValue(userInfo, key)))
                  : Owned<CFArrayRef>();
}

// A new host array of item objects. An item that is null, or for which the host makes no object, is left out.
Owned<REALobject> ConvertArray(CFArrayRef items) {
  auto array = adopt(REALCreateArray(kObjectElements, -1));
  const CFIndex count = items ? CFArrayGetCount(items) : 0;
  int32_t position = 0;
  for (CFIndex i = 0; i < count; ++i) {
    const auto item = static_cast<MDItemRef>(const_cast<void*>(CFArrayGetValueAtIndex(items, i)));
    if (!item) continue;
    const auto object = newItem(item);
    if (object) REALInsertArrayValueObject(array.get(), position++, object.get());
  }
  return array;
}

void raiseItemsEvent(REALobject self, MDQueryEvent event, CFDictionaryRef userInfo) {
  const auto handler = handlerOf<ItemsHandler>(self, event);
  if (!handler) return;
  auto addedItems = retainItems(userInfo, kMDQueryUpdateAddedItems);
  auto changedItems = retainItems(userInfo, kMDQueryUpdateChangedItems);
  auto removedItems = retainItems(userInfo, kMDQueryUpdateRemovedItems);
  auto added = ConvertArray(addedItems.get());
  auto changed = ConvertArray(changedItems.get());
  auto removed = ConvertArray(removedItems.get());
  handler(self, added.get(), changed.get(), removed.get());
  added.reset();
  changed.reset();
  removed.reset();
  addedItems.reset();
  changedItems.reset();
  removedItems.reset();
}

void raiseFinishEvent(REALobject self) {
  if (const auto handler = handlerOf<FinishHandler>(self, kFinishEvent)) handler(self);
}

}  // namespace

void MyCallBack(CFNotificationCenterRef, void* observer, CFStringRef name, const void*,
                CFDictionaryRef userInfo) {
  const auto self = static_cast<REALobject>(observer);
  if (!self) return;
  if (isNamed(name, kMDQueryProgressNotification)) {
    raiseItemsEvent(self, kProgressEvent, userInfo);
  } else if (isNamed(name, kMDQueryDidFinishNotification)) {
    raiseFinishEvent(self);
  } else if (isNamed(name, kMDQueryDidUpdateNotification)) {
    raiseItemsEvent(self, kUpdateEvent, userInfo);
  }
}
