#include "item.h"

#include "bridge/strings.h"
#include "host/exceptions.h"

namespace {

// The string properties are nil, without an exception, for an instance without an item.
REALstring stringAttribute(REALobject self, CFStringRef key) {
  const MDItemRef item = itemData(self)->item;
  if (!item) return nullptr;
  const auto value = adopt(MDItemCopyAttribute(item, key));
  return CFString2RBString(static_cast<CFStringRef>(value.get())).leak();
}

MDItemRef itemOrRaise(REALobject self) {
  const MDItemRef item = itemData(self)->item;
  if (!item) raiseNilItem();
  return item;
}

}  // namespace

void raiseNilItem() {
  RaiseException("NilObjectException", "MDItem Reference is nil");
}

Owned<REALobject> newItem(MDItemRef item) {
  auto instance = adopt(REALnewInstance("MDItemZNK"));
  if (instance) itemData(instance.get())->item = retain(item).leak();
  return instance;
}

void MDItemDestructor(REALobject self) {
  MDItemData* const data = itemData(self);
  releaseField(data->item);
  releaseField(data->tag);
}

REALstring querykMDItemDisplayName(REALobject self, int32_t) {
  return stringAttribute(self, kMDItemDisplayName);
}

REALstring querykMDItemFSName(REALobject self, int32_t) {
  return stringAttribute(self, kMDItemFSName);
}

REALstring querykMDItemPath(REALobject self, int32_t) {
  return stringAttribute(self, kMDItemPath);
}

int64_t querykMDItemFSSize(REALobject self, int32_t) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return 0;
  const auto value = adopt(MDItemCopyAttribute(item, kMDItemFSSize));
  if (!value) return 0;
  int64_t size = 0;
  return CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberSInt64Type, &size) ? size : 0;
}

static constexpr REALproperty MDItemProperties[] = {
    REALproperty::field("Handle", "Integer", offsetof(MDItemData, item)),
    REALproperty::field("Tag", "Variant", offsetof(MDItemData, tag)),
    REALproperty::readOnly("DisplayName", "String", querykMDItemDisplayName),
    REALproperty::readOnly("FSName", "String", querykMDItemFSName),
    REALproperty::readOnly("Path", "String", querykMDItemPath),
    REALproperty::readOnly("FSSize", "Int64", querykMDItemFSSize),
};

REALclassDefinition MDItemClass =
    REALclassDefinition("MDItemZNK", sizeof(MDItemData), MDItemDestructor).with(MDItemProperties);
