#include "standin/host/entry/entry_points.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/program/gate_name.h"
#include "standin/host/state/runtime.h"

namespace standin::host {
namespace {

struct EntryPoint {
  const char* name;
  void* function;
};

#define ENTRY(name) \
  { #name, reinterpret_cast < void*>(&entry::name) }

const EntryPoint kEntryPoints[] = {
    ENTRY(RegisterPluginVersion),
    ENTRY(REALGetRBVersion),
    ENTRY(REALinRuntime),
    ENTRY(PluginRegisterClass),
    ENTRY(PluginRegisterMethod),
    ENTRY(PluginNewInstance),
    ENTRY(pluginObjectType),
    ENTRY(RuntimeObjectIsa),
    ENTRY(REALLockObject),
    ENTRY(REALUnlockObject),
    ENTRY(REALLockString),
    ENTRY(REALUnlockString),
    ENTRY(RuntimeRaiseException),
    ENTRY(GetEventInstance),
    ENTRY(REALBuildString),
    ENTRY(REALGetStringEncoding),
    ENTRY(REALSetStringEncoding),
    ENTRY(REALConvertString),
    ENTRY(REALGetStringCFString),
    ENTRY(PluginGetStringData),
    ENTRY(StringGetCString),
    ENTRY(PluginDisposeStringData),
    ENTRY(REALLoadGlobalMethod),
    ENTRY(REALLoadObjectMethod),
    ENTRY(REALGetPropValueInt),
    ENTRY(REALSetPropValueInt),
    ENTRY(REALGetPropValueInt64),
    ENTRY(REALGetPropValueSingle),
    ENTRY(REALGetPropValueDouble),
    ENTRY(REALGetPropValueString),
    ENTRY(REALSetPropValueString),
    ENTRY(VariantToString),
    ENTRY(VariantToInt32),
    ENTRY(VariantToInt64),
    ENTRY(VariantToSingle),
    ENTRY(VariantToDouble),
    ENTRY(StringToVariant),
    ENTRY(Int32ToVariant),
    ENTRY(Int64ToVariant),
    ENTRY(DoubleToVariant),
    ENTRY(BooleanToVariant),
    ENTRY(RuntimeArrayCreateSingleDimBoundedArray),
    ENTRY(RuntimeUBound),
    ENTRY(RuntimeArrayDirectGetInsertProc),
    ENTRY(RuntimeArrayDirectGetGetProc),
    ENTRY(RuntimeArrayDirectGetSetProc),
    ENTRY(RuntimeDirectReadStringArray),
    ENTRY(memoryBlockGetPtr),
    ENTRY(memoryBlockGetSize),
    ENTRY(REALFSRefFromFolderItem),
    ENTRY(REALFolderItemFromParentFSRef),
    ENTRY(REALFSSpecFromFolderItem),
    ENTRY(FolderItemFromFSSpec),
};

#undef ENTRY

// Null when no entry point has the name.
void* functionOf(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kEntryPoints), std::end(kEntryPoints),
                                         [name](const EntryPoint& row) { return row.name == name; });
  return found == std::end(kEntryPoints) ? nullptr : found->function;
}

// Whether this request for a name is to be answered.
bool answers(const std::string& name) {
  Runtime& host = runtime();
  const int request = ++host.requests[name];
  if (host.settings.hidden.count(name) != 0) return false;
  if (name == "REALGetRBVersion" && !host.settings.hasVersion) return false;
  const auto delay = host.settings.delayed.find(name);
  return delay == host.settings.delayed.end() || request >= delay->second;
}

}  // namespace

void* standinHostResolve(const char* name) {
  if (!name) die("(resolver)", "a null name");
  const Gate gate(gateName(std::string("resolve ") + name));
  void* const found = !gate.fails() && answers(name) ? functionOf(name) : nullptr;
  const bool versionDenied = !found && std::string_view(name) == "REALGetRBVersion";
  if (versionDenied && !runtime().versionTold) runtime().versionTold = 0;
  return found;
}

std::vector<std::string> entryPointNames() {
  std::vector<std::string> names;
  for (const EntryPoint& row : kEntryPoints) names.emplace_back(row.name);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace standin::host
