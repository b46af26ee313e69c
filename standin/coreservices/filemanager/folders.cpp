// The folders that a system keeps for a purpose. There is one here: the frameworks, beside this library.
#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

#include "standin/coreservices/services.h"
#include "standin/gate/gate.h"
#include "standin/system/fsref_table.h"

namespace {

// Empty when the system can't tell where this library is.
std::string frameworksFolder() {
  static const char inThisLibrary = 0;
  Dl_info info;
  if (!::dladdr(&inThisLibrary, &info)) return {};
  const std::unique_ptr<char, decltype(&std::free)> path(::realpath(info.dli_fname, nullptr), &std::free);
  if (!path) return {};
  const std::string library = path.get();
  return library.substr(0, library.rfind('/')) + "/Frameworks";
}

bool isFolder(const std::string& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

// The volume makes no difference: there is one. A folder of any other type isn't found.
OSErr FSFindFolder(FSVolumeRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) {
  standin::Gate gate{"FSFindFolder"};
  if (!foundRef) standin::die("FSFindFolder", "the FSRef is null");
  if (gate.fails() || folderType != kFrameworksFolderType) return fnfErr;
  const std::string folder = frameworksFolder();
  if (folder.empty()) return fnfErr;
  if (createFolder && ::mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) return fnfErr;
  return isFolder(folder) && standin::makeFSRef(folder, *foundRef) ? noErr : fnfErr;
}
