// The folders that a system keeps for a purpose. There is one here: the frameworks, beside this library.
#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <string>

#include "standin/coreservices/services.h"
#include "standin/gate/gate.h"
#include "standin/system/fsref_table.h"
#include "standin/system/paths.h"

namespace {

// Empty when the system can't tell where this library is.
std::string frameworksFolder() {
  static const char inThisLibrary = 0;
  Dl_info info;
  if (!::dladdr(&inThisLibrary, &info)) return {};
  const std::optional<std::string> library = standin::realPath(info.dli_fname);
  return library ? standin::parentPath(*library) + "/Frameworks" : "";
}

}  // namespace

// The volume makes no difference: there is one. A folder of any other type isn't found.
OSErr FSFindFolder(FSVolumeRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) {
  const standin::Gate gate(__func__);
  if (!foundRef) standin::die(__func__, "the FSRef is null");
  if (gate.fails() || folderType != kFrameworksFolderType) return fnfErr;
  const std::string folder = frameworksFolder();
  if (folder.empty()) return fnfErr;
  if (createFolder && ::mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) return fnfErr;
  return standin::isFolder(folder) && standin::makeFSRef(folder, *foundRef) ? noErr : fnfErr;
}
