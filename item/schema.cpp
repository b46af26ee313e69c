// What the system's schema says about attribute keys, without any item. Nothing here raises.
#include <string.h>

#include "bridge/strings.h"
#include "host/build_string.h"
#include "item.h"

namespace {

// Nil for a key that the schema has no text for.
REALstring schemaText(REALstring name, CFStringRef (*copyText)(CFStringRef name)) {
  const auto key = RBString2CFString(name);
  if (!key) return nullptr;
  const auto text = adopt(copyText(key.get()));
  return CFString2RBString(text.get()).leak();
}

// A type is compared with the rows in this order.
// clang-format off
constexpr struct {
  CFTypeID (*typeID)();
  const char* name;
} kTypeNames[] = {
    {CFBooleanGetTypeID, "Boolean"},
    {CFNumberGetTypeID,  "Number"},
    {CFDateGetTypeID,    "Date"},
    {CFStringGetTypeID,  "String"},
    {CFUUIDGetTypeID,    "UUID"},
    {CFArrayGetTypeID,   "Array"},
};
// clang-format on

Owned<REALstring> typeName(CFTypeID type) {
  for (const auto& row : kTypeNames) {
    if (row.typeID() != type) continue;
    return REALBuildUnicodeString(row.name, static_cast<int64_t>(strlen(row.name)), kCFStringEncodingASCII);
  }
  return {};
}

}  // namespace

REALstring rbMDSchemaCopyDisplayNameForAttribute(REALstring name) {
  return schemaText(name, MDSchemaCopyDisplayNameForAttribute);
}

REALstring rbMDSchemaCopyDisplayDescriptionForAttribute(REALstring name) {
  return schemaText(name, MDSchemaCopyDisplayDescriptionForAttribute);
}

REALobject rbMDSchemaCopyAllAttributes() {
  auto array = adopt(REALCreateArray(kStringElements, -1));
  const auto attributes = adopt(MDSchemaCopyAllAttributes());
  if (attributes) AddStringArray(array.get(), attributes.get());
  return array.leak();
}

// The name of the type in the schema. The type of an array's elements doesn't matter: a list of strings is an
// "Array".
REALstring GetAttributeType(REALstring name) {
  const auto key = RBString2CFString(name);
  if (!key) return nullptr;
  const auto attributes = adopt(MDSchemaCopyMetaAttributesForAttribute(key.get()));
  if (!attributes) return nullptr;
  const auto type = static_cast<CFNumberRef>(CFDictionaryGetValue(attributes.get(), kMDAttributeType));
  int32_t typeID = 0;
  if (!type || !CFNumberGetValue(type, kCFNumberIntType, &typeID)) return nullptr;
  return typeName(static_cast<CFTypeID>(typeID)).leak();
}

HostBoolean GetAttributeMultiValued(REALstring name) {
  const auto key = RBString2CFString(name);
  if (!key) return false;
  const auto attributes = adopt(MDSchemaCopyMetaAttributesForAttribute(key.get()));
  if (!attributes) return false;
  const auto multiValued =
      static_cast<CFBooleanRef>(CFDictionaryGetValue(attributes.get(), kMDAttributeMultiValued));
  return multiValued && CFBooleanGetValue(multiValued);
}
