#include "standin/host/things/folder_items.h"

#include "standin/host/host.h"

namespace standin::host {

std::string withoutEndSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

Value folderItem(const std::string& path) {
  if (path.empty() || path.front() != '/') throw CallError("no absolute path: " + path);
  const Value made = newInstance("FolderItem");
  instanceAs<HostFolderItem>(made, "a path for", "a FolderItem").path = withoutEndSlash(path);
  return made;
}

std::string path(const Value& folderItem) {
  return instanceAs<HostFolderItem>(folderItem, "a path asked of", "a FolderItem").path;
}

}  // namespace standin::host
