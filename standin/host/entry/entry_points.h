// entry/: where the plug-in's calls arrive: at entry points that the resolver gives out, at functions that it
// loads by their declarations, and at the procedures of arrays. May include all other rooms, the gate and
// the headers in platform/; no other room includes this one.
//
// The functions behind the host's entry points, each under its host name. The table of them all, in which the
// resolver looks, is in entry_points.cpp.
#pragma once

#include <cstdint>

#include "standin/host/value.h"

struct FSRef;
struct FSSpec;
struct HFSUniStr255;

namespace standin::host {

// What "PluginGetStringData" fills.
struct StringData {
  char* data;
  int32_t length;
  uint32_t encoding;
};

struct ClassReference;

namespace entry {

// registration.cpp
void RegisterPluginVersion(int32_t version);
double REALGetRBVersion();
bool REALinRuntime();
void PluginRegisterClass(uint32_t* record);
void PluginRegisterMethod(uint32_t* record);

// objects.cpp
ObjectHandle PluginNewInstance(const char* className);
const ClassReference* pluginObjectType(const char* className);
bool RuntimeObjectIsa(ObjectHandle object, const ClassReference* reference);
void REALLockObject(ObjectHandle object);
void REALUnlockObject(ObjectHandle object);

// strings.cpp
void REALLockString(StringHandle string);
void REALUnlockString(StringHandle string);
StringHandle REALBuildString(const char* bytes, int32_t length);
uint32_t REALGetStringEncoding(StringHandle string);
void REALSetStringEncoding(StringHandle string, uint32_t encoding);
StringHandle REALConvertString(StringHandle string, uint32_t encoding);
const void* REALGetStringCFString(StringHandle string, bool external);
bool PluginGetStringData(StringHandle string, uint32_t encoding, StringData* data);
const char* StringGetCString(StringHandle string);
void PluginDisposeStringData(StringData* data);

// exceptions.cpp
void RuntimeRaiseException(ObjectHandle exception);

// events.cpp
void* GetEventInstance(ObjectHandle object, uint32_t event);

// functions.cpp
void* REALLoadGlobalMethod(ObjectHandle object, const char* declaration);
void* REALLoadObjectMethod(ObjectHandle object, const char* declaration);

// properties.cpp
bool REALGetPropValueInt(ObjectHandle object, const char* name, int32_t* out);
bool REALSetPropValueInt(ObjectHandle object, const char* name, int32_t value);
bool REALGetPropValueInt64(ObjectHandle object, const char* name, int64_t* out);
bool REALGetPropValueSingle(ObjectHandle object, const char* name, float* out);
bool REALGetPropValueDouble(ObjectHandle object, const char* name, double* out);
bool REALGetPropValueString(ObjectHandle object, const char* name, StringHandle* out);
bool REALSetPropValueString(ObjectHandle object, const char* name, StringHandle value);

// variants.cpp
StringHandle VariantToString(ObjectHandle variant);
int32_t VariantToInt32(ObjectHandle variant);
int64_t VariantToInt64(ObjectHandle variant);
float VariantToSingle(ObjectHandle variant);
double VariantToDouble(ObjectHandle variant);
ObjectHandle StringToVariant(StringHandle string);
ObjectHandle Int32ToVariant(int32_t value);
ObjectHandle Int64ToVariant(int64_t value);
ObjectHandle DoubleToVariant(double value);
ObjectHandle BooleanToVariant(bool value);

// array_procedures.cpp
ObjectHandle RuntimeArrayCreateSingleDimBoundedArray(int32_t elementType, int32_t upperBound);
int32_t RuntimeUBound(ObjectHandle array);
void* RuntimeArrayDirectGetInsertProc(ObjectHandle array);
void* RuntimeArrayDirectGetGetProc(ObjectHandle array);
void* RuntimeArrayDirectGetSetProc(ObjectHandle array);
StringHandle RuntimeDirectReadStringArray(ObjectHandle array, int32_t index);

// memory_blocks.cpp
void* memoryBlockGetPtr(ObjectHandle block);
int32_t memoryBlockGetSize(ObjectHandle block);

// folder_items.cpp
bool REALFSRefFromFolderItem(ObjectHandle item, FSRef* ref, HFSUniStr255* name);
ObjectHandle REALFolderItemFromParentFSRef(const FSRef* parent, const HFSUniStr255* name);
bool REALFSSpecFromFolderItem(FSSpec* fsSpec, ObjectHandle item);
ObjectHandle FolderItemFromFSSpec(const FSSpec* fsSpec);

}  // namespace entry

}  // namespace standin::host
