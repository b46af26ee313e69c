// The conversions, exported for tests: no method of the plug-in's classes leads to all of them.
#include "bridge/cf_to_variant.h"
#include "bridge/dates.h"
#include "bridge/dictionary_methods.h"
#include "bridge/folder_items.h"
#include "bridge/variant_to_cf.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT REALobject toVariant(CFTypeRef value) {
  return GetCFTypeAsVariant(value).leak();
}

EXPORT CFTypeRef toCF(REALobject variant) {
  return CopyVariantAsCFType(variant).leak();
}

EXPORT CFDateRef toDate(REALobject date) {
  return RBDate2CFDate(date).leak();
}

EXPORT CFURLRef toURL(REALobject item) {
  return CreateCFURLfromFolderItem(item).leak();
}

EXPORT void addPair(const void* key, const void* value, void* dictionary) {
  MyCFDictionaryApplierFunction(key, value, dictionary);
}

EXPORT REALobject lastDictionary() {
  return LastDictionary;
}
