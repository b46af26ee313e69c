// The host's services that the rows reach. They answer the same each time and do nothing else.
#include <CoreServices/CoreServices.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "bench/calls/host.h"
#include "bench/calls/note.h"
#include "bench/calls/things.h"

namespace bench::calls {

namespace {

// Registration

// Those of both start-ups, with room to spare: a stub doesn't look.
const REALclassDefinition* classes[16];
size_t classCount = 0;

void RegisterPluginVersion(int32_t version) {
  NOTE(version);
}

double REALGetRBVersion() {
  NOTE();
  return 2014.1;
}

bool REALinRuntime() {
  NOTE();
  return true;
}

void PluginRegisterClass(REALclassDefinition* definition) {
  NOTE(definition->name, definition->version, definition->dataSize);
  definition->dataOffset = kDataOffset;
  classes[classCount++] = definition;
}

void PluginRegisterMethod(const REALmethodDefinition* method) {
  NOTE(method->declaration);
}

// Objects

void* PluginNewInstance(const char* className) {
  NOTE(className);
  return &newInstance;
}

const void* pluginObjectType(const char* className) {
  NOTE(className);
  return className;
}

bool RuntimeObjectIsa(const Thing* object, const char* className) {
  NOTE(object, className);
  return *object->className == *className;
}

void REALUnlockObject(void* object) {
  NOTE(object);
}

// Strings

void REALUnlockString(void* unlocked) {
  NOTE(unlocked);
}

void* REALBuildString(const char* bytes, int32_t length) {
  NOTE(place(bytes), length);
  return &newString;
}

void REALSetStringEncoding(void* changed, uint32_t encoding) {
  NOTE(changed, encoding);
}

const void* REALGetStringCFString(void* converted, bool external) {
  NOTE(converted, external);
  return &newCFString;
}

// Properties

bool REALGetPropValueInt(void* object, const char* name, int32_t* value) {
  NOTE(object, name, buffer(value, sizeof *value));
  *value = kElements;
  return true;
}

bool REALSetPropValueInt(void* object, const char* name, int32_t value) {
  NOTE(object, name, value);
  return true;
}

// Variants

void* StringToVariant(void* value) {
  NOTE(value);
  return &newStringVariant;
}

void* Int32ToVariant(int32_t value) {
  NOTE(value);
  return &newNumberVariant;
}

void* Int64ToVariant(int64_t value) {
  NOTE(value);
  return &newNumberVariant;
}

void* DoubleToVariant(double value) {
  NOTE(value);
  return &newNumberVariant;
}

int32_t VarType(const Thing* asked) {
  NOTE(asked);
  return static_cast<int32_t>(asked->type);
}

int32_t VariantToInt32(void* read) {
  NOTE(read);
  return 5;
}

void* VariantToString(void* read) {
  NOTE(read);
  return &variantsString;
}

// Arrays

void* RuntimeArrayCreateSingleDimBoundedArray(int32_t elements, int32_t upperBound) {
  NOTE(elements, upperBound);
  return &newArray;
}

int32_t RuntimeUBound(void* asked) {
  NOTE(asked);
  return kElements - 1;
}

void insertElement(void* changed, int32_t index, void* value) {
  NOTE(changed, index, value);
}

void getElement(void* asked, int32_t index, void** value) {
  NOTE(asked, index, buffer(value, sizeof *value));
  *value = &elementString;
}

void setElement(void* changed, void* value, int32_t index) {
  NOTE(changed, value, index);
}

auto RuntimeArrayDirectGetInsertProc(void* asked) {
  NOTE(asked);
  return insertElement;
}

auto RuntimeArrayDirectGetGetProc(void* asked) {
  NOTE(asked);
  return getElement;
}

auto RuntimeArrayDirectGetSetProc(void* asked) {
  NOTE(asked);
  return setElement;
}

// Functions of the host's language

void setEntry(void* dictionary, void* key, void* value) {
  NOTE(dictionary, key, value);
}

void* entryOf(void* dictionary, void* key) {
  NOTE(dictionary, key);
  return &integerVariant;
}

void* keyAt(void* dictionary, int32_t index) {
  NOTE(dictionary, index);
  return &stringVariant;
}

// A folder item alone has this method.
bool isTrueItem(const char* declaration) {
  return *declaration == 'T';
}

template <typename Function>
void* address(Function* function) {
  return reinterpret_cast<void*>(function);
}

void* REALLoadObjectMethod(const Thing* object, const char* declaration) {
  NOTE(object, declaration);
  if (isTrueItem(declaration)) return *object->className == 'F' ? address(keyAt) : nullptr;
  if (*declaration == 'K') return address(keyAt);
  const size_t afterKey = sizeof "Value(key As Variant" - 1;
  return declaration[afterKey] == ',' ? address(setEntry) : address(entryOf);
}

void* REALLoadGlobalMethod(void* null, const char* declaration) {
  NOTE(null, declaration);
  return address(VarType);
}

// Folder items

bool REALFSRefFromFolderItem(void* asked, FSRef* file, HFSUniStr255* name) {
  NOTE(asked, place(file), place(name));
  return true;
}

void* REALFolderItemFromParentFSRef(const FSRef* parent, const HFSUniStr255* name) {
  NOTE(place(parent), place(name));
  return &newFolderItem;
}

struct Service {
  const char* name;
  void* function;
};
#define SERVICE(name) \
  { #name, address(name) }

// Those that start-up asks for, in its order.
const Service kStartUp[] = {
    SERVICE(RegisterPluginVersion), SERVICE(REALGetRBVersion),     SERVICE(REALinRuntime),
    SERVICE(PluginRegisterClass),   SERVICE(PluginRegisterMethod),
};

const Service kServices[] = {
    SERVICE(PluginNewInstance),
    SERVICE(pluginObjectType),
    SERVICE(RuntimeObjectIsa),
    SERVICE(REALUnlockObject),
    SERVICE(REALUnlockString),
    SERVICE(REALBuildString),
    SERVICE(REALSetStringEncoding),
    SERVICE(REALGetStringCFString),
    SERVICE(REALGetPropValueInt),
    SERVICE(REALSetPropValueInt),
    SERVICE(StringToVariant),
    SERVICE(Int32ToVariant),
    SERVICE(Int64ToVariant),
    SERVICE(DoubleToVariant),
    SERVICE(VariantToInt32),
    SERVICE(VariantToString),
    SERVICE(RuntimeArrayCreateSingleDimBoundedArray),
    SERVICE(RuntimeUBound),
    SERVICE(RuntimeArrayDirectGetInsertProc),
    SERVICE(RuntimeArrayDirectGetGetProc),
    SERVICE(RuntimeArrayDirectGetSetProc),
    SERVICE(REALLoadObjectMethod),
    SERVICE(REALLoadGlobalMethod),
    SERVICE(REALFSRefFromFolderItem),
    SERVICE(REALFolderItemFromParentFSRef),
};

#undef SERVICE

template <size_t count>
void* find(const Service (&services)[count], const char* name) {
  for (const Service& service : services) {
    if (!std::strcmp(service.name, name)) return service.function;
  }
  return nullptr;
}

}  // namespace

void* resolve(const char* name) {
  void* function = find(kStartUp, name);
  if (!function) function = find(kServices, name);
  if (function) return function;
  std::fprintf(stderr, "bench-calls: no stub of the service %s; add one to bench/calls/host_stubs.cpp\n",
               name);
  std::exit(1);
}

void* resolveStartUp(const char* name) {
  static size_t next = 0;
  NOTE(name);
  return kStartUp[next++].function;
}

void* methodOf(const char* declaration) {
  for (size_t registered = 0; registered < classCount; ++registered) {
    const REALclassDefinition* const definition = classes[registered];
    for (int i = 0; i < definition->methodCount; ++i) {
      const REALmethodDefinition& row = definition->methods[i];
      if (!std::strcmp(row.declaration, declaration)) return address(row.function.function);
    }
  }
  return nullptr;
}

}  // namespace bench::calls
