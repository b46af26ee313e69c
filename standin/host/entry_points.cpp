#include "standin/host/entry_points.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "standin/host/host.h"

namespace standin::host {
namespace {

struct EntryPoint {
  const char* name;
  void* function;
};

#define ENTRY(name) \
  { #name, reinterpret_cast < void*>(&entry::name) }

const EntryPoint entryPoints[] = {
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

}  // namespace

void* entryPoint(std::string_view name) {
  const auto* const found = std::find_if(std::begin(entryPoints), std::end(entryPoints),
                                         [name](const EntryPoint& row) { return row.name == name; });
  return found == std::end(entryPoints) ? nullptr : found->function;
}

std::vector<std::string> entryPointNames() {
  std::vector<std::string> names;
  for (const EntryPoint& row : entryPoints) names.emplace_back(row.name);
  std::sort(names.begin(), names.end());
  return names;
}

const char* gateName(const std::string& name) {
  static auto* const names = new std::set<std::string>;
  return names->insert(name).first->c_str();
}

}  // namespace standin::host
