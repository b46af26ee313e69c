// Functions of the host language that the plug-in loads by their declarations.
#include <cstring>

#include "standin/gate/gate.h"
#include "standin/host/entry_points.h"
#include "standin/host/objects.h"
#include "standin/host/runtime.h"
#include "standin/host/strings.h"

namespace standin::host {
namespace {

int32_t varType(ObjectHandle variant) {
  const Gate gate("VarType");
  if (!variant) return 0;
  const int32_t type = variantType(objectThingAt(variant));
  return gate.fails() ? 0 : type;
}

int32_t lenB(StringHandle string) {
  const Gate gate("LenB");
  if (!string) return 0;
  const HostString& read = stringAt(string);
  return gate.fails() ? 0 : static_cast<int32_t>(read.bytes.size());
}

struct GlobalFunction {
  const char* declaration;  // the plug-in must ask with this very text
  void* function;
};

const GlobalFunction globalFunctions[] = {
    {"VarType(value As Variant) As Int32", reinterpret_cast<void*>(&varType)},
    {"LenB( s as string ) as integer", reinterpret_cast<void*>(&lenB)},
};

}  // namespace

namespace entry {

void* REALLoadGlobalMethod(ObjectHandle object, const char* declaration) {
  const Gate gate("REALLoadGlobalMethod");
  if (object) die("REALLoadGlobalMethod", "the first argument must be null");
  if (!declaration) die("REALLoadGlobalMethod", "a null declaration");
  if (gate.fails() || settings().unloadableMethods.count(declaration) != 0) return nullptr;
  for (const GlobalFunction& row : globalFunctions) {
    if (std::strcmp(row.declaration, declaration) == 0) return row.function;
  }
  return nullptr;
}

void* REALLoadObjectMethod(ObjectHandle handle, const char* declaration) {
  const Gate gate("REALLoadObjectMethod");
  if (!declaration) die("REALLoadObjectMethod", "a null declaration");
  auto* const object = dynamic_cast<HostObject*>(&objectThingAt(handle));
  if (gate.fails() || !object || settings().unloadableMethods.count(declaration) != 0) return nullptr;
  if (void* const own = object->ownMethod(declaration)) return own;
  Declaration wanted;
  try {
    wanted = parseMethod(declaration);
  } catch (const DeclarationError& error) {
    die("REALLoadObjectMethod", error.what());
  }
  for (const Method& method : object->cls.methods) {
    if (sameSignature(method.declaration, wanted)) return method.function;
  }
  return nullptr;
}

}  // namespace entry
}  // namespace standin::host
