// The schema's public functions: what is known of attributes, whatever the file.
#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/metadata/cf_values.h"
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "standin/coreservices/services.h"

namespace {

using standin::Gate;
using namespace standin::metadata;

// Null for a name that is no key of the schema.
const AttributeInfo* infoNamed(CFStringRef name) {
  const FileAttribute attribute = attributeNamed(name);
  return attribute == FileAttribute::None ? nullptr : &infoOf(attribute);
}

CFTypeID typeIdOf(ValueType type) {
  switch (type) {
    case ValueType::Boolean:
      return CFBooleanGetTypeID();
    case ValueType::Number:
      return CFNumberGetTypeID();
    case ValueType::Date:
      return CFDateGetTypeID();
    case ValueType::String:
      return CFStringGetTypeID();
    case ValueType::UUID:
      return CFUUIDGetTypeID();
    case ValueType::Data:
      return CFDataGetTypeID();
    case ValueType::Strings:
    case ValueType::Dates:
      return CFArrayGetTypeID();
  }
  return 0;
}

}  // namespace

CFStringRef MDSchemaCopyDisplayNameForAttribute(CFStringRef name) {
  const Gate gate(__func__);
  checkString(__func__, name);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFStringRef>(planned);
  const AttributeInfo* const info = infoNamed(name);
  return gate.fails() || !info ? nullptr : createString(info->displayName);
}

CFStringRef MDSchemaCopyDisplayDescriptionForAttribute(CFStringRef name) {
  const Gate gate(__func__);
  checkString(__func__, name);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFStringRef>(planned);
  const AttributeInfo* const info = infoNamed(name);
  return gate.fails() || !info ? nullptr : createString(info->description);
}

CFArrayRef MDSchemaCopyAllAttributes(void) {
  const Gate gate(__func__);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFArrayRef>(planned);
  if (gate.fails()) return nullptr;
  const CFMutableArrayRef keys = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  if (!keys) return nullptr;
  for (const AttributeInfo& info : schema()) appendAndRelease(keys, createString(info.key));
  return keys;
}

CFDictionaryRef MDSchemaCopyMetaAttributesForAttribute(CFStringRef name) {
  const Gate gate(__func__);
  checkString(__func__, name);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFDictionaryRef>(planned);
  const AttributeInfo* const info = infoNamed(name);
  if (gate.fails() || !info) return nullptr;
  const CFMutableDictionaryRef about = CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  if (!about) return nullptr;
  const auto type = static_cast<int32_t>(typeIdOf(info->type));
  setAndRelease(about, kMDAttributeName, createString(info->key));
  setAndRelease(about, kMDAttributeType, CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt32Type, &type));
  CFDictionarySetValue(about, kMDAttributeMultiValued,
                       isMultiValued(info->type) ? kCFBooleanTrue : kCFBooleanFalse);
  return about;
}
