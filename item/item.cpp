// The life of an item object, its properties and general methods, and the tables of its class.
#include "item.h"

#include "attribute_keys.h"
#include "bridge/cf_to_variant.h"
#include "bridge/folder_items.h"
#include "bridge/strings.h"
#include "host/array_before_guard.h"
#include "host/exceptions.h"

namespace {

// The string properties are nil, without an exception, for an instance without an item.
REALstring stringAttribute(REALobject self, CFStringRef key) {
  const MDItemRef item = itemData(self)->item;
  if (!item) return nullptr;
  const auto value = adopt(MDItemCopyAttribute(item, key));
  return CFString2RBString(static_cast<CFStringRef>(value.get())).leak();
}

}  // namespace

void raiseNilItem() {
  RaiseException("NilObjectException", "MDItem Reference is nil");
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

// Nil for a nil array of names, and when it can't be converted. Attributes that the item doesn't have are not
// in the dictionary.
REALobject rbMDItemCopyAttributes(REALobject self, REALobject names) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return nullptr;
  const auto keys = NewCFStringArray(names);
  if (!keys) return nullptr;
  const auto attributes = adopt(MDItemCopyAttributes(item, keys.get()));
  return attributes ? CFDictionary2RBDictionary(attributes.get()).leak() : nullptr;
}

REALobject rbMDItemCopyAttribute(REALobject self, REALstring name) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return nullptr;
  const auto key = RBString2CFString(name);
  if (!key) return nullptr;
  const auto value = adopt(MDItemCopyAttribute(item, key.get()));
  return GetCFTypeAsVariant(value.get()).leak();
}

// Raises for an instance without an item, and so for every new one: host programs know it this way. In an
// instance that has an item, the new item replaces it; the old one is not released.
void rbMDItemCreate(REALobject self, REALobject path) {
  if (!itemOrRaise(self)) return;
  const auto url = CreateCFURLfromFolderItem(path);
  if (url) itemData(self)->item = MDItemCreateWithURL(kCFAllocatorDefault, url.get());
}

REALobject rbMDItemCopyAttributeNames(REALobject self) {
  const auto [made, item] = newArrayBeforeGuard(kStringElements, itemOrRaise, self);
  if (!item) return nullptr;
  auto array = adopt(made);
  const auto names = adopt(MDItemCopyAttributeNames(item));
  if (names) AddStringArray(array.get(), names.get());
  return array.leak();
}

static constexpr REALproperty MDItemProperties[] = {
    REALproperty::field("Handle", "Integer", offsetof(MDItemData, item)),
    REALproperty::field("Tag", "Variant", offsetof(MDItemData, tag)),
    REALproperty::readOnly("DisplayName", "String", querykMDItemDisplayName),
    REALproperty::readOnly("FSName", "String", querykMDItemFSName),
    REALproperty::readOnly("Path", "String", querykMDItemPath),
    REALproperty::readOnly("FSSize", "Int64", querykMDItemFSSize),
};

static constexpr REALmethodDefinition MDItemMethods[] = {
    {rbMDItemCopyAttributes, "GetAttributes(names() as string) as dictionary"},
    {rbMDItemCopyAttribute, "GetAttribute(name as string) as variant"},
    {rbMDItemCreate, "Constructor(path as folderitem)"},
    {rbMDItemCopyAttributeNames, "AttributeNames as string()"},
    {rbMDItemCopyAttributeString, "AttributeString(name as string) as string"},
    {rbMDItemCopyAttributeBoolean, "AttributeBoolean(name as string) as boolean"},
    {rbMDItemCopyAttributeDouble, "AttributeDouble(name as string) as double"},
    {rbMDItemCopyAttributeStringArray, "AttributeStringArray(name as string) as string()"},
};

static constexpr REALmethodDefinition MDItemSharedMethods[] = {
    {rbMDSchemaCopyDisplayNameForAttribute, "DisplayNameForAttribute(name as string) as string"},
    {rbMDSchemaCopyDisplayDescriptionForAttribute,
     "DisplayDescriptionForAttribute(name as string) as string"},
    {rbMDSchemaCopyAllAttributes, "AllAttributes as string()"},
    {GetAttributeType, "AttributeType(name as string) as string"},
    {GetAttributeMultiValued, "AttributeMultiValued(name as string) as boolean"},
#define PLATFORM_KEY(key) {get##key, #key " as string"},
#define TEXT_KEY(key) {get##key, #key " as string"},
#include "attribute_keys.inc"
};

REALclassDefinition MDItemClass = REALclassDefinition("MDItemZNK", sizeof(MDItemData), MDItemDestructor)
                                      .with(MDItemProperties)
                                      .with(MDItemMethods)
                                      .withShared(MDItemSharedMethods);
