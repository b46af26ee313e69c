#pragma once

#include "../CarbonCore/Files.h"

CS_EXPORT CFStringRef MDSchemaCopyDisplayNameForAttribute(CFStringRef name);
CS_EXPORT CFStringRef MDSchemaCopyDisplayDescriptionForAttribute(CFStringRef name);
CS_EXPORT CFArrayRef MDSchemaCopyAllAttributes(void);
CS_EXPORT CFDictionaryRef MDSchemaCopyMetaAttributesForAttribute(CFStringRef name);

// Keys of the dictionary of meta-attributes
CS_EXPORT const CFStringRef kMDAttributeName;
CS_EXPORT const CFStringRef kMDAttributeType;
CS_EXPORT const CFStringRef kMDAttributeMultiValued;
