// Functions and methods of the host language that the plug-in loads by their declarations.
#include <cstring>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/entry/loaded_methods.h"
#include "standin/host/host.h"
#include "standin/host/language/declarations.h"
#include "standin/host/things/dictionaries.h"
#include "standin/host/things/folder_items.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/strings.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

// The functions have the names that the host language knows them by.

int32_t VarType(ObjectHandle variant) {
  const Gate gate(__func__);
  if (!variant) return 0;
  const int32_t type = variantType(objectThingAt(variant));
  return gate.fails() ? 0 : type;
}

int32_t LenB(StringHandle string) {
  const Gate gate(__func__);
  if (!string) return 0;
  const HostString& read = stringAt(string);
  return gate.fails() ? 0 : static_cast<int32_t>(read.bytes.size());
}

struct GlobalFunction {
  const char* declaration;  // the plug-in must ask with this very text
  void* function;
};

const GlobalFunction kGlobalFunctions[] = {
    {"VarType(value As Variant) As Int32", reinterpret_cast<void*>(&VarType)},
    {"LenB( s as string ) as integer", reinterpret_cast<void*>(&LenB)},
};

void* ownMethod(HostObject& object, std::string_view declaration) {
  if (auto* const dictionary = dynamic_cast<HostDictionary*>(&object)) {
    return dictionaryMethod(*dictionary, declaration);
  }
  return dynamic_cast<HostFolderItem*>(&object) ? folderItemMethod(declaration) : nullptr;
}

}  // namespace

namespace entry {

void* REALLoadGlobalMethod(ObjectHandle object, const char* declaration) {
  const Gate gate(__func__);
  if (object) die(__func__, "the first argument must be null");
  if (!declaration) die(__func__, "a null declaration");
  if (gate.fails() || settings().unloadableMethods.count(declaration) != 0) return nullptr;
  for (const GlobalFunction& row : kGlobalFunctions) {
    if (std::strcmp(row.declaration, declaration) == 0) return row.function;
  }
  return nullptr;
}

void* REALLoadObjectMethod(ObjectHandle handle, const char* declaration) {
  const Gate gate(__func__);
  if (!declaration) die(__func__, "a null declaration");
  auto* const object = asKind<HostObject>(objectThingAt(handle));
  if (gate.fails() || !object || settings().unloadableMethods.count(declaration) != 0) return nullptr;
  if (void* const own = ownMethod(*object, declaration)) return own;
  Declaration wanted;
  try {
    wanted = parseMethod(declaration);
  } catch (const DeclarationError& error) {
    die(__func__, error.what());
  }
  for (const Method& method : object->cls.withMembers().methods) {
    if (sameSignature(method.declaration, wanted)) return method.function;
  }
  return nullptr;
}

}  // namespace entry
}  // namespace standin::host
